// One JSON file on disk: a settings file, a tracker, a set of definitions.
#pragma once

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "base/ReadWrite.h"
#include "common/json/JsonParse.h"
#include "common/results/RetVal.h"
#include "common/threads/HeldLog.h"

namespace KXP {

// Holds no open file between calls and stays usable after any failure. Nothing is locked: the owner of each
// file keeps two calls from running at once. An owner that holds a lock for this passes a HeldLog, which then
// receives the lines instead of the log.
class JSONFile {
  public:
    JSONFile() = default;
    // The file `name` in the folder of `parts` and, unless empty, `extraFolder`. Makes the folder; throws
    // Exception 0x80004005 when it cannot.
    JSONFile(std::vector<std::string> parts, const std::string& extraFolder, const std::string& name);

    // Names the file by its whole path and creates nothing.
    void Init(const std::string& path);

    const std::string& directory() const { return directory_; }
    const std::string& path() const { return path_; }

    // Opens for reading, or for writing, which empties the file. The caller closes. 0x80070002 when it fails.
    RetVal OpenFile(FILE*& file, bool read) const;

    // Reads UTF-8, UTF-16 or UTF-32 in either byte order, recognised by its mark or its zero bytes, with
    // comments allowed and an object at the root. 0x80070002 when there is no such file, 0x8008F001 when the
    // text is wrong, 0x8007000D when its root is no object; `document` and what `elements` has received are
    // then not to be used.
    RetVal ReadAndParseJSON(Document& document, const ElementReader* elements = nullptr) const;
    RetVal ReadAndParseJSON(Document& document, HeldLog& log, const ElementReader* elements = nullptr) const;
    // The same, but if the file cannot be read for a reason that may pass (IsPassingError), returns
    // 0x80004005 with the system's text and number, and logs nothing.
    RetVal ReadUnlessPassing(Document& document, HeldLog& log) const;

    // Writes over the file in place, indented by tabs. After a kill or on a full disk ReadAndParseJSON finds
    // the old text or the new one: space is reserved first, and a second copy stands after the text while the
    // text itself is overwritten.
    // 0x80070002 when the file cannot be opened, 0x80004005 when it cannot be written.
    RetVal WriteJSON(const Document& document) const;
    RetVal WriteJSON(const Document& document, HeldLog& log) const;
    // The same with what `write` passes to the writer, for callers without a document. Takes the memory of
    // one text.
    RetVal WriteJSON(const std::function<void(PrettyJsonWriter&)>& write, HeldLog& log) const;

    // A write that finds this true after one of its steps, and had not found it true before, stops there as
    // if the process had been killed. The flag outlives the object.
    void StopWritesOnce(const std::atomic<bool>& flag) { stopWrites_ = &flag; }

    // The same with the text itself.
    RetVal WriteText(std::string_view text, HeldLog& log) const;
    // Replaces everything after the first `keep` bytes of the text with `tail`, at the cost of the tail
    // alone. The caller knows that the file is as its own last write left it. After a kill or on a full disk
    // ReadAndParseJSON finds the old text or the new one here too. 0x80004005 for a `keep` beyond the file.
    RetVal WriteTail(size_t keep, std::string_view tail, HeldLog& log) const;
    // The same with a tail in parts, which are written one after the other.
    using Parts = std::vector<std::string_view>;
    RetVal WriteTail(size_t keep, const Parts& tail, HeldLog& log) const;

    // By this the owner of a file recognises it as it was left.
    struct Stamp {
        uint64_t device = 0;
        uint64_t inode = 0;
        uint64_t size = 0;
        int64_t seconds = 0;  // of the last change
        int64_t nanoseconds = 0;

        bool operator==(const Stamp& other) const;
    };
    // False when there is no such file.
    bool ReadStamp(Stamp& stamp) const;

    // Deletes the file, and its folder when that is then empty. The text is "Success" whatever the code.
    RetVal RemoveFile() const;
    RetVal RemoveFile(HeldLog& log) const;

  private:
    RetVal Parse(FileBytes& text, Document& document, const ElementReader* elements, HeldLog& log) const;
    RetVal NotFound(HeldLog& log) const;
    RetVal OpenFailed(const char* mode, HeldLog& log) const;

    std::string directory_;
    std::string path_;
    const std::atomic<bool>* stopWrites_ = nullptr;
};

}  // namespace KXP
