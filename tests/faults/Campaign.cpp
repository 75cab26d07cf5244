// Does each operation on a small gallery again and again, while one call of the system fails or the process
// is killed, and checks that nobody's file is lost or torn, that the product still answers, and that its
// record is true within a minute.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <CLI/CLI.hpp>
#include <dlfcn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/faults/Faults.h"
#include "tests/faults/Operations.h"
#include "tests/support/TempFolder.h"

namespace {

using Contents = std::map<std::string, std::string>;

struct Point {
    const Operation* operation;
    size_t kind;
    long nth;
    int error;
};

const faults::Control& Calls() {
    const auto control = reinterpret_cast<decltype(&FaultsControl)>(dlsym(RTLD_DEFAULT, "FaultsControl"));
    if (!control) throw std::runtime_error("the library of faults is not loaded ahead of this program");
    static const faults::Control& calls = *control();
    return calls;
}

std::string Name(const Point& point) {
    const std::string error = point.error == faults::kShort  ? "short"
                              : point.error == faults::kKill ? "killed"
                                                             : strerrorname_np(point.error);
    return std::string(point.operation->name) + ": " + Calls().kinds[point.kind].name + " no. " +
           std::to_string(point.nth) + " " + error;
}

// What the processes of a campaign share.
struct Shared {
    long calls[64];
    bool fired;
    bool succeeded;
    char why[65536];
};

class Campaign {
  public:
    Campaign(std::string productRoot, std::string home)
        : productRoot_(std::move(productRoot)), home_(std::move(home)), gallery_(home_) {
        void* const memory =
            mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) throw std::runtime_error("no shared memory");
        shared_ = new (memory) Shared();
        gallery_.LayOut();
        before_ = gallery_.Contents();
    }

    // Undisturbed: what the operation makes of the gallery, and how many calls of each kind it takes.
    std::vector<long> Observe(const Operation& operation) {
        Run({&operation, 0, 0, 0}, {});
        after_[&operation] = gallery_.Contents();
        return {shared_->calls, shared_->calls + Calls().count};
    }

    // Whether the call came. `why` says what does not hold after it.
    bool Run(const Point& point, std::chrono::microseconds killAfter, std::string& why) {
        Run(point, killAfter);
        why = shared_->why;
        return shared_->fired || point.error == faults::kKill;
    }

  private:
    void Run(const Point& point, std::chrono::microseconds killAfter) {
        *shared_ = {};
        gallery_.LayOut();
        const bool kills = point.error == faults::kKill;
        Fork([&] { Disturb(point, killAfter); }, kills);
        if (shared_->why[0] == '\0') Fork([&] { Examine(*point.operation); }, false);
    }

    // In a process of its own, which ends with a reason in the shared memory if anything is wrong.
    template <typename Work>
    void Fork(const Work& work, bool mayBeKilled) {
        const pid_t child = fork();
        if (child == 0) {
            alarm(150);
            try {
                work();
            } catch (const std::exception& error) {
                Fail(error.what());
            }
            _exit(0);
        }
        int status = 0;
        if (child < 0 || waitpid(child, &status, 0) != child) throw std::runtime_error("no process");
        if (!WIFSIGNALED(status) || (mayBeKilled && WTERMSIG(status) == SIGKILL)) return;
        Fail(WTERMSIG(status) == SIGALRM ? "it hangs"
                                         : std::string("it ended with ") + strsignal(WTERMSIG(status)));
    }

    void Fail(const std::string& why) {
        if (!why.empty()) std::snprintf(shared_->why, sizeof(shared_->why), "%s", why.c_str());
    }

    void Disturb(const Point& point, std::chrono::microseconds killAfter) {
        const Operation& operation = *point.operation;
        Product product(productRoot_, home_);
        if (!product.Up()) return Fail("it does not start");
        Fail(gallery_.AwaitTrueRecord());
        const std::string kept = "{\"file\":\"" + gallery_.Path("Race/b.png") +
                                 R"(","memeInfo":{"topBarText":"kept","bottomBarText":""}})";
        (void)product.Ask("AddMeme", kept);
        if (operation.startsStopped) product.Down();
        const bool timed = killAfter.count() > 0;
        Calls().arm(point.kind, timed ? 0 : point.nth, point.error);
        std::thread killer;
        if (timed)
            killer = std::thread([killAfter] {
                std::this_thread::sleep_for(killAfter);
                (void)kill(getpid(), SIGKILL);
            });
        shared_->succeeded = operation.run(product, gallery_);
        shared_->fired = Calls().disarm();
        for (size_t i = 0; i < Calls().count; ++i)
            shared_->calls[i] = Calls().calls(i);
        if (timed) killer.join();
        if (std::strcmp(operation.name, "stop") == 0) return;
        if (operation.startsStopped && !shared_->succeeded) {
            product.Down();
            if (!product.Up()) return Fail("it does not start again");
        }
        if (!ChooseGallery(product, gallery_)) Fail("the settings cannot be changed");
        Fail(gallery_.AwaitTrueRecord());
        product.Down();
    }

    // After the next start.
    void Examine(const Operation& operation) {
        Product product(productRoot_, home_);
        if (!product.Up()) return Fail("it does not start after that");
        std::string why = ChooseGallery(product, gallery_) ? "" : "the settings cannot be changed\n";
        why += gallery_.AwaitTrueRecord();
        if (product.Ask("GetSettings", "{}").find(R"("_return_code":0)") == std::string::npos)
            why += "the settings are lost\n";
        product.Down();
        const std::string caption = gallery_.CaptionOf("Race/b.png");
        if (caption != "kept") why += "the caption is \"" + caption + "\"\n";
        if (!why.empty() && std::getenv("COBALIX_LOG_LEVEL")) why += product.Log();
        Fail(why + WhatIsLeft() + WhatIsLost(operation) + WhatIsTorn(operation));
    }

    static bool Holds(const Contents& contents, const std::string& bytes) {
        return std::any_of(contents.begin(), contents.end(),
                           [&](const auto& file) { return file.second == bytes; });
    }

    // Files for passing use in the product's own folder, which the start removes.
    std::string WhatIsLeft() const {
        std::string left;
        for (const auto& entry :
             std::filesystem::directory_iterator(home_ + "/data/ZORVEX/OvirastreamX/Share")) {
            const std::string name = entry.path().filename();
            if (name.rfind("UGCEdit_", 0) == 0 || name.rfind("NewFile_", 0) == 0)
                left += "left: " + name + "\n";
        }
        return left;
    }

    std::string WhatIsLost(const Operation& operation) const {
        const Contents now = gallery_.Contents();
        std::string lost;
        for (const auto& [name, bytes] : before_) {
            if (operation.removes && name == operation.removes) continue;
            const bool edited = operation.edits && name == operation.edits;
            if (edited ? now.count(name) == 0 : !Holds(now, bytes)) lost += "lost: " + name + "\n";
        }
        return lost;
    }

    std::string WhatIsTorn(const Operation& operation) const {
        const auto after = after_.find(&operation);
        if (after == after_.end()) return "";
        const Contents now = gallery_.Contents();
        std::string torn;
        for (const auto& [name, bytes] : now) {
            if (before_.count(name) + after->second.count(name) == 0) torn += "left: " + name + "\n";
            const bool known = Holds(before_, bytes) || Holds(after->second, bytes);
            // An engraving that was stopped leaves free space of its own, and the movie in its place.
            const bool engraved = std::strcmp(operation.name, "engrave") == 0 && name == operation.edits &&
                                  bytes.find(MediaOf(before_.at(name))) != std::string::npos;
            if (!known && !engraved) torn += "torn: " + name + "\n";
        }
        // What removes several files goes on after one that stays.
        if (shared_->succeeded && shared_->fired && !operation.edits && !operation.removes &&
            now != after->second)
            torn += "it said that it was done\n";
        return torn;
    }

    // The media data, from its header on.
    static std::string MediaOf(const std::string& movie) {
        const size_t at = movie.find("mdat");
        return movie.substr(at, std::min<size_t>(movie.find("moov", at) - at, movie.size()) - 8);
    }

    const std::string productRoot_;
    const std::string home_;
    const SmallGallery gallery_;
    Contents before_;
    std::map<const Operation*, Contents> after_;
    Shared* shared_;
};

// Calls of each kind and operation in turn, so that a few points already are of all kinds.
std::vector<Point> Draw(Campaign& campaign, bool kills, const std::string& only, size_t count,
                        std::mt19937& random) {
    std::vector<std::vector<Point>> groups;
    for (const Operation& operation : Operations()) {
        if (!only.empty() && only != operation.name) continue;
        const std::vector<long> calls = campaign.Observe(operation);
        for (size_t kind = 0; kind < calls.size(); ++kind) {
            const bool isMemory =
                std::string_view("malloc new").find(Calls().kinds[kind].name) != std::string::npos;
            if (kills && isMemory) continue;
            std::vector<Point>& group = groups.emplace_back();
            for (long nth = 1; nth <= calls[kind]; ++nth)
                for (const int error : Calls().kinds[kind].errors)
                    if (error != 0 && (!kills || error == Calls().kinds[kind].errors[0]))
                        group.push_back({&operation, kind, nth, kills ? faults::kKill : error});
            std::shuffle(group.begin(), group.end(), random);
        }
    }
    std::shuffle(groups.begin(), groups.end(), random);
    std::vector<Point> points;
    for (size_t round = 0, added = 1; added > 0 && points.size() < count; ++round) {
        added = 0;
        for (const auto& group : groups) {
            if (round >= group.size() || points.size() >= count) continue;
            points.push_back(group[round]);
            ++added;
        }
    }
    return points;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Fails calls of the system, or kills the process, while the product works");
    std::string mode = "fail";
    std::string only;
    size_t count = 4000;
    unsigned seed = 1;
    app.add_option("mode", mode, "fail, kill (before a call) or random (at any moment)")
        ->check(CLI::IsMember({"fail", "kill", "random"}));
    app.add_option("--points", count, "How many points")->capture_default_str();
    app.add_option("--seed", seed, "Of the draw")->capture_default_str();
    app.add_option("--only", only, "The operation, by default all");
    CLI11_PARSE(app, argc, argv);
    // A long campaign is watched through a pipe or a file.
    std::setvbuf(stdout, nullptr, _IOLBF, 0);

    const TempFolder home;
    Campaign campaign(PRODUCT_ROOT, home.path());
    std::mt19937 random(seed);
    const std::vector<Point> points = Draw(campaign, mode != "fail", only, count, random);
    size_t reached = 0;
    size_t failed = 0;
    for (size_t done = 0; done < points.size(); ++done) {
        if (done % 100 == 0)
            std::printf("%zu of %zu points done, %zu with a fault\n", done, points.size(), failed);
        const Point& point = points[done];
        const long limit = std::strcmp(point.operation->name, "capture") == 0 ? 150000 : 60000;
        const std::chrono::microseconds after(mode == "random" ? 1 + static_cast<long>(random() % limit) : 0);
        std::string why;
        const auto start = std::chrono::steady_clock::now();
        if (campaign.Run(point, after, why)) ++reached;
        const auto took = std::chrono::steady_clock::now() - start;
        if (took > std::chrono::seconds(5))
            std::printf("%s took %ld s\n", Name(point).c_str(),
                        static_cast<long>(took / std::chrono::seconds(1)));
        if (why.empty()) continue;
        ++failed;
        std::printf("%s (after %ld us)\n    %s\n", Name(point).c_str(), static_cast<long>(after.count()),
                    why.c_str());
    }
    std::printf("%zu points drawn with seed %u, %zu reached, %zu with a fault\n", points.size(), seed,
                reached, failed);
    return failed == 0 && reached > 0 ? 0 : 1;
}
