// A file that appears under its name whole or not at all. Until then it has no name, or on volumes without
// nameless files a hidden random one beside its place. Nobody else can have put anything there, so no link is
// followed and no reader finds half a file; what is not put into its place is removed. What a killed process
// leaves under a hidden name, the next start of the product removes (PartFiles.h).
#pragma once

#include <memory>
#include <string>

#include "base/FileDescriptor.h"
#include "base/WorkNote.h"

namespace KXP {

// What outlasts a loss of power when Put returns.
enum class Durability {
    None,            // whatever the system has written by then
    Content,         // the bytes, before the file gets its name: there is the old file or the whole new one
    ContentAndName,  // the name as well, on volumes that can promise it
};

class NewFile {
  public:
    static constexpr unsigned kPrivate = 0600;

    // Creates an empty file in the folder of `place` with `mode` less the umask. IsOpen is false, with errno
    // set, when that fails.
    explicit NewFile(const std::string& place, unsigned mode = kPrivate);
    // The same for a name in an open folder; closed, with errno as it is, when the folder is.
    NewFile(FileDescriptor folder, std::string name, unsigned mode = kPrivate);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    bool IsOpen() const { return file_.IsOpen(); }
    // For reading and writing.
    const FileDescriptor& descriptor() const { return file_; }

    // What is in the place now; a link itself. False with errno set, ENOENT among others.
    bool LookAtPlace(struct stat& status) const;

    // Ends the writing and puts the file into its place, once: PutNew where nothing may be yet (EEXIST),
    // PutOver in place of the file or link that is there. False with errno set.
    bool PutNew(Durability durability = Durability::None) { return Put(name_, false, durability); }
    bool PutOver(Durability durability = Durability::None) { return Put(name_, true, durability); }
    // As PutNew, in one step where the file has no name yet. Who watches the folder sees a file that is
    // created, as any link is, instead of one that is moved into its place. After EEXIST it can be called
    // again, with another name in the folder.
    bool LinkNew(const std::string& name);

  private:
    void Create(unsigned mode);
    void CreateHidden(unsigned mode);
    bool GiveHiddenName();
    bool Put(const std::string& name, bool replace, Durability durability);

    FileDescriptor folder_;
    const std::string name_;
    std::string hidden_;              // empty while the file has no name
    std::unique_ptr<WorkNote> note_;  // of the hidden name
    FileDescriptor file_;
};

}  // namespace KXP
