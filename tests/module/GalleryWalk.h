// Does to a gallery, at random, what users and games do to theirs, while the library follows it in a process
// of its own; and holds what the library says against the model when it has had time to hear of it.
#pragma once

#include <cstddef>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/module/GalleryModel.h"
#include "tests/module/TrackerProcess.h"
#include "tests/module/TrackerRecords.h"
#include "tests/support/TempFolder.h"

class GalleryWalk {
  public:
    explicit GalleryWalk(unsigned seed);

    // Some steps one behind the other, and then the comparison. Gives the number of steps, and 0 after a
    // failure, which is told to the test.
    int Spell();
    void End();

  private:
    struct Operation {
        int weight;
        void (GalleryWalk::*run)();
    };
    static const Operation kFileOperations[];
    static const Operation kTrackerOperations[];

    int Random(int below) { return static_cast<int>(random_() % static_cast<unsigned>(below)); }
    bool Chance(int percent) { return Random(100) < percent; }
    template <size_t Size>
    void RunOne(const Operation (&operations)[Size]);
    void Say(const std::string& text);

    std::string AnyGame();
    std::string SomeGame();
    std::string FreeGame();
    std::string SomeFile();
    std::string Bytes(const std::string& extension, bool own);
    std::string SomeName(const std::string& extension);
    std::string SomeExtension();
    void Write(const std::string& path, bool own);
    void MoveFile(const std::string& from, const std::string& to);
    void MoveFolder(const std::string& from, const std::string& to);

    void Create();
    void CreateInSteps();
    void CreateForeign();
    void CreateNested();
    void CreateLoose();
    void Rename();
    void MoveToGame();
    void Replace();
    void Overwrite();
    void Delete();
    void RenameGame();
    void MoveGameOut();
    void MoveGameIn();
    void CopyGameIn();
    void DeleteGame();
    void Pause();
    void AskAmidst();

    void MoveGalleryAway();
    void ChangeGallery();
    void CancelChange();
    void KillAmidst();
    void KillAtRest();

    void Start();
    void PutMarker();
    bool Settle();
    bool Await();
    bool AwaitNews();
    std::string Compare();
    std::string CompareAnswers();

    const TempFolder home_;
    const std::string galleries_[2] = {home_.MakeFolder("Videos/ZORVEX/Ovirastream"),
                                       home_.MakeFolder("Other/Gallery")};
    const std::string outside_ = home_.MakeFolder("Outside");
    const std::string away_ = home_.MakeFolder("Elsewhere") + "/Gallery";
    const std::string trackerFile_ = home_ / "data/ZORVEX/OvirastreamX/Share/UGCTracker.json";
    std::mt19937 random_;
    GalleryModel model_{galleries_[0]};
    std::unique_ptr<TrackerProcess> process_;
    TrackerRecords records_;
    std::string previous_;  // the gallery that a cancelled change goes back to
    std::string marker_;
    int markers_ = 0;
    std::vector<std::string> outsiders_;  // folders outside the gallery
    int folders_ = 0;
    std::string said_;
};
