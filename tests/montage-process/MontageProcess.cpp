// A montage process for tests: it finds its task in the file of the real one, reports its progress by way of
// the container, and makes a real video. Words in the request's "behaviour", or the recipe's name, choose how
// it goes wrong.
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <string>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "common/json/JsonHelpers.h"
#include "common/product/Profile.h"
#include "sample-media/MadeMedia.h"

namespace {

// To the container, if there is one.
void Send(const std::string& message) {
    const char* path = std::getenv("GALLERY_HOST_MESSAGES");
    sockaddr_un address{};
    if (!path || std::strlen(path) >= sizeof address.sun_path) return;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path, std::strlen(path));
    const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (sendto(fd, message.data(), message.size(), 0, reinterpret_cast<const sockaddr*>(&address),
               sizeof address) < 0)
        std::perror("sendto");
    close(fd);
}

void SendProgress(double percent) {
    Send(R"({"method":"UpdateMontageProgress","payload":{"progress":)" + std::to_string(percent) + "}}");
}

class Montage {
  public:
    explicit Montage(const KXP::Value& params)
        : output_(KXP::jsonGetValue<std::string>(params, "output")),
          behaviour_(" " + KXP::jsonGetValueOrDefault<std::string>(params, "behaviour", "") + " " +
                     std::filesystem::path(KXP::jsonGetValue<std::string>(params, "recipe")).stem().string() +
                     " ") {}

    int Make(const std::string& argument) {
        if (Behaves("ignores")) std::signal(SIGTERM, SIG_IGN);
        if (Behaves("child")) StartChild();
        std::printf("running %d %s\n", getpid(), argument.c_str());
        std::fflush(stdout);
        if (Behaves("babbles")) Babble();
        SendProgress(12.5);
        if (Behaves("fails")) return 7;
        if (Behaves("hangs")) Hang();
        made::Video video;
        video.frames = 10;
        std::filesystem::copy_file(made::Path(video), output_,
                                   std::filesystem::copy_options::overwrite_existing);
        std::puts("written");
        std::fflush(stdout);
        if (Behaves("lingers")) Hang();
        SendProgress(100);
        return 0;
    }

  private:
    bool Behaves(const std::string& word) const {
        return behaviour_.find(" " + word + " ") != std::string::npos;
    }

    [[noreturn]] static void Hang() {
        for (;;)
            pause();
    }

    static void StartChild() {
        const pid_t child = fork();
        if (child == 0) Hang();
        std::printf("child %d\n", child);
    }

    static void Babble() {
        for (const std::string& message :
             {std::string("no JSON"), std::string(100000, 'x'),
              std::string(R"({"method":"MontageNotification","type":3073})"), std::string(R"({"method":5})")})
            Send(message);
        for (int line = 0; line < 3000; ++line)
            std::printf("line %d %s\n", line, std::string(200, '\xff').c_str());
        std::fflush(stdout);
    }

    const std::string output_;
    const std::string behaviour_;
};

}  // namespace

int main(int argc, char** argv) try {
    const std::string prefix = "https://media-reference.localhost";
    if (argc != 2 || std::string(argv[1]).compare(0, prefix.size(), prefix) != 0) return 2;
    KXP::Document storage;
    if (!KXP::ReadJSON(KXP::GetAppDataDirectory(KXP::LocalApp) + "/sharedstorage.json", storage)) return 3;
    return Montage(KXP::JSONGetObject(storage, "recipeParams")).Make(argv[1]);
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
