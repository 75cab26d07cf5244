// A file that appears under its name only when it is whole. It is made beside its place under a hidden name
// of its own, which nobody else can have put there, so that no link is followed and no reader finds a half.
#pragma once

#include <string>

#include "common/FileDescriptor.h"

namespace KXP {

class NewFile {
  public:
    // Makes the hidden file, private to the user, in the folder of `place`. IsOpen is false, with errno set,
    // when that cannot be done.
    explicit NewFile(std::string place);
    // Removes what was not put into its place.
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    bool IsOpen() const { return file_.IsOpen(); }
    const FileDescriptor& descriptor() const { return file_; }

    // Ends the writing and puts the file into its place, once: where nothing may be yet, or over the file or
    // link that is there. False with errno set, EEXIST among others.
    bool PutNew() { return Put(false); }
    bool PutOver() { return Put(true); }

  private:
    bool Put(bool replace);

    const std::string place_;
    std::string hidden_;  // empty when there is none
    FileDescriptor file_;
};

}  // namespace KXP
