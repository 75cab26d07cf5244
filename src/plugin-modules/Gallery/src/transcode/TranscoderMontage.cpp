// The montage process.
#include <optional>
#include <system_error>

#include "CobalixUtil.h"
#include "common/results/RetVal.h"
#include "common/text/TextUtil.h"
#include "plugin-modules/Gallery/src/transcode/Transcoder.h"

namespace {

// What a program can fill the log with.
constexpr int kMaxLinesLogged = 2000;

}  // namespace

Transcoder::MontageRun::MontageRun(Transcoder& owner) : owner_(owner) {
    const KXP::MutexLock lock(owner_.montageMutex_);
    owner_.montages_.insert(this);
}

Transcoder::MontageRun::~MontageRun() {
    const KXP::MutexLock lock(owner_.montageMutex_);
    owner_.montages_.erase(this);
}

// Whoever cancels must not find a process that is gone, however its end was met.
class Transcoder::MontageRun::ProcessEnd {
  public:
    explicit ProcessEnd(MontageRun& run) : run_(run) {}
    ~ProcessEnd() {
        const KXP::MutexLock lock(run_.owner_.montageMutex_);
        run_.process_ = nullptr;
    }
    ProcessEnd(const ProcessEnd&) = delete;
    ProcessEnd& operator=(const ProcessEnd&) = delete;

  private:
    MontageRun& run_;
};

int32_t Transcoder::CreateCefMontageProcess(MontageRun& run, const std::string& launchPath,
                                            const std::vector<std::string>& arguments) {
    std::optional<KXP::ChildProcess> process;
    try {
        // Started under the lock, so that a cancel finds either no process and is remembered, or this one.
        const KXP::MutexLock lock(montageMutex_);
        if (run.canceled_) return KXP::Code::kOk;
        process.emplace(launchPath, arguments);
        run.process_ = &*process;
    } catch (const std::system_error& error) {
        KXP_LOG(KXP::LogFailure, "error: failed to launch CEF Montage: %s", error.what());
        return KXP::Code::kFailure;
    }
    const MontageRun::ProcessEnd end(run);
    int lines = 0;
    process->Wait([&](std::string_view line) {
        if (++lines <= kMaxLinesLogged)
            KXP_LOG(KXP::LogDetail, "Montage: %s", KXP::ToValidUtf8(line).c_str());
        else if (lines == kMaxLinesLogged + 1)
            KXP_LOG(KXP::LogDetail, "Montage: it prints more, which is not logged");
    });
    return KXP::Code::kOk;
}

void Transcoder::CancelMontage(std::chrono::milliseconds grace) {
    KXP_LOG(KXP::LogMilestone, "Canceling Transcoder");
    const KXP::MutexLock lock(montageMutex_);
    for (MontageRun* run : montages_) {
        run->canceled_ = true;
        if (run->process_) run->process_->Terminate(grace);
    }
}

bool Transcoder::WasMontageCanceled(const MontageRun& run) const {
    const KXP::MutexLock lock(montageMutex_);
    return run.canceled_;
}
