// The product at work on a small gallery, and what must hold after anything was done to it.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>

#include "core/container/cef/ZvCefPlugin.h"
#include "tests/support/FakeContainer.h"

// The plug-in, loaded once and started as often as is asked for. The process's home is `home`.
class Product {
  public:
    Product(const std::string& productRoot, const std::string& home);

    // False when it does not get as far as answering requests.
    bool Up();
    // Whatever state it is in.
    void Down();

    // What this object's product has logged.
    std::string Log() const;
    // Throws after a minute without an answer.
    std::string Ask(const std::string& method, const std::string& payload);

  private:
    bool Command(const std::function<int()>& command);

    ZvCefPluginInfo* info_;
    FakeContainer container_;
    bool isUp_ = false;
    int asked_ = 0;
};

// Two games with a picture, two videos and a highlight, and what came of them.
class SmallGallery {
  public:
    explicit SmallGallery(std::string home);

    // Everything as it was at first, nothing in the product's own folders.
    void LayOut() const;

    std::string Path(const std::string& name) const { return folder_ + "/" + name; }
    const std::string& folder() const { return folder_; }
    // By calls of this program, which never fail.
    void AddPicture(const std::string& name) const;

    // The content of every file in it, by the name below the gallery.
    std::map<std::string, std::string> Contents() const;
    // Why the record contradicts the disk, or "". Waits for up to a minute for it to be true.
    std::string AwaitTrueRecord() const;
    // The caption on record, "" for none.
    std::string CaptionOf(const std::string& name) const;

  private:
    std::string WhyUntrue() const;

    const std::string home_;
    const std::string folder_;
    const std::string tracker_;
    std::map<std::string, std::string> files_;
};
