// Seeds of what reaches the host.
#include "fuzz/SeedCorpus.h"

namespace {

void MakeText(Corpus corpus) {
    corpus.Add("{\"a\":\"\xC3\xA9\xE2\x80\xAE\xF0\x9F\x98\x80\x7F\"}");
    corpus.Add("\x1B[31m\xC0\x80\xED\xA0\x80\xF4\x90\x80\x80\xE4\xB8\xAD\xFF");
    corpus.Add(std::string("=\xD8\0\xDE\0\0\0\0a\0\0\0\0\xD8\0\0", 16));
}

void MakeLines(Corpus corpus) {
    corpus.Add("\x05\x02one\ntoo long\n\nlast");
    corpus.Add(std::string("\0\0\n\na", 5));
}

void MakeTrashInfo(Corpus corpus) {
    const std::string head = "[Trash Info]\nPath=";
    corpus.Add(head + "a/b%20%C3%A9.png\nDeletionDate=2026-03-14T18:06:00\n");
    corpus.Add("# x\n\n" + head +
               "/%2e%2e%00\nDeletionDate=2026-03-14T18:06:00.123+01:00\n[Other]\nPath[de]=%");
}

void MakePageRequest(Corpus corpus) {
    const std::string host = "host:127.0.0.1:7000";
    corpus.Add("GET\n/media/02ab?a=%2F&b&=c\n" + host +
               "\ncookie:a=b;  gallery-7000=0123456789abcdef\nrange:bytes=0-99\nif-none-match:W/\"a-b\", *");
    corpus.Add(
        "HEAD\n/launch?token=%00\nhost:localhost:7000\nsec-fetch-site:cross-site\n"
        "sec-fetch-mode:navigate\nsec-fetch-dest:document\nrange:bytes=-5");
    corpus.Add(
        "GET\n/socket\nhost:[::1]:7000\norigin:http://[::1]:7000\nsec-fetch-site:same-origin\n"
        "range: bytes= 18446744073709551616- ");
    corpus.Add("OPTIONS\n*\n" + host + "\n" + host + "\norigin:null\nrange:bytes=5-2,7-");
}

// A text frame, masked with zeros.
std::string Masked(std::string_view text) {
    std::string frame = "\x81";
    frame += static_cast<char>(0x80 | text.size());
    return frame.append(4, '\0').append(text);
}

void MakePageServer(Corpus corpus) {
    const std::string host = "Host: 127.0.0.1:7000\r\n";
    // The secrets and the name of the picture are those that the target gives out.
    const std::string rest =
        "Cookie: gallery-7000=02020202020202020202020202020202\r\n"
        "Range: bytes=1-2\r\nIf-None-Match: \"x\"\r\n\r\n";
    const std::string picture = "/0b4fe8ee1adc93730a4bd9afa7f3043c";
    corpus.Add("GET / HTTP/1.1\r\n" + host + "\r\nHEAD /index.html HTTP/1.0\r\n" + host + "\r\n");
    corpus.Add("GET /launch?token=03030303030303030303030303030303 HTTP/1.1\r\n" + host + "\r\n");
    for (const char* route : {"/media", "/thumb", "/keyframes"})
        corpus.Add(std::string("GET ")
                       .append(route)
                       .append(picture)
                       .append("?w=1&h=2 HTTP/1.1\r\n")
                       .append(host)
                       .append(rest));
    corpus.Add("POST / HTTP/1.1\r\n" + host + "Transfer-Encoding: chunked\r\n\r\n0\r\n\r\n");
    const std::string upgrade =
        "GET /socket HTTP/1.1\r\n" + host +
        "Upgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Version: 13\r\n"
        "Sec-WebSocket-Key: AAAAAAAAAAAAAAAAAAAAAA==\r\nOrigin: http://127.0.0.1:7000\r\n\r\n";
    const std::string token = Masked(R"({"token":"01010101010101010101010101010101"})");
    corpus.Add(upgrade + token + Masked(R"({"method":"GetSettings"})") + Masked(""));
    corpus.Add(upgrade + Masked("{}"));
    corpus.Add(upgrade + token + std::string("\x89\x80\0\0\0\0\x88\x82\0\0\0\0\x03\xE8", 14));
    corpus.Add(upgrade + token + std::string("\x01\x81\0\0\0\0a\x80\x81\0\0\0\0b\x82\x80\0\0\0\0", 20));
}

void MakeHostText(Corpus corpus) {
    const std::string capture =
        R"({"path":"/g/a\u001b/b\u202e.png","fileType":"image","fileSubType":"x\u0007","fileSource":"y",)"
        R"("fileSizeKB":1e300,"date":"2026-01-02T03:04:05Z","msDuration":-5,"shortName":"\u009b"})";
    corpus.Add(R"({"method":"Saved","payload":{"games":[{"name":"g\n","ugc":[)" + capture +
               "]}],\"recents\":[" + capture + "]}}");
    corpus.Add(R"({"method":"GalleryUpdatedNotification","payload":{"name":"\u001b[2J","type":"video",)"
               R"("added":[)" +
               capture + R"(],"capacity":{"enabled":true,"percent":50,"totalMB":512000}}})");
    corpus.Add(R"({"payload":{"folders":["a",1,"\r"],"files":[{"name":"\u2028","sizeKB":2}],)"
               R"("directories":[{"name":"d\u0085"}],"path":"/x","progress":0.5,"status":"s"}})");
    corpus.Add("[\x1B");
}

}  // namespace

void MakeHostSeeds(const std::filesystem::path& root) {
    MakeText({root, "text"});
    MakeLines({root, "lines"});
    MakeTrashInfo({root, "trashinfo"});
    MakePageRequest({root, "pagerequest"});
    MakePageServer({root, "pageserver"});
    MakeHostText({root, "hosttext"});
}
