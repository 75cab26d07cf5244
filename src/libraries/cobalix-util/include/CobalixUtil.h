// The utility library that every module of the client shares: the log, and the transfer of files from the
// cloud. This is its whole public face. Every call may be made from any thread.
#pragma once

#include <string>

#if defined(__GNUC__)
#define KXP_PRINTF_FORMAT(formatIndex, firstArgument) \
    __attribute__((format(printf, formatIndex, firstArgument)))
#else
#define KXP_PRINTF_FORMAT(formatIndex, firstArgument)
#endif

// A log line under the place that writes it; takes a level and a printf format with its arguments.
#define KXP_LOG(level, ...) ::KXP::LogMessage((level), __FILE__, __LINE__, __VA_ARGS__)

#pragma GCC visibility push(default)

namespace KXP {

// Selects a family of data folders.
enum Profile : int {
    LocalApp = 0,        // per-application data
    ProfileProduct = 1,  // the product's shared data
    ProfileLibrary = 2,  // the product's data in the user's library folder
};

enum LogLevel : int {
    LogFailure = 1,
    LogMilestone = 2,
    LogDetail = 3,
    LogTrace = 4,  // one line per event
};

// Receives one formatted line, without a line end; the text is valid during the call only.
using LogCallback = void (*)(const char* line, void* context);

// Routes every later line to `callback`, from whichever thread logs; a null callback routes to standard
// error. When the call returns, no other thread is inside the callback that was set before. Lines above the
// level in force are dropped: that is 3, or the number in the environment variable COBALIX_LOG_LEVEL.
void LogInit(Profile profile, LogCallback callback, void* context);

// Writes "[time][level][thread] file:line text". Costs one load when the level is not in force. Never throws;
// must not be called with a lock held that the callback may need.
void LogMessage(LogLevel level, const char* file, int line, const char* format, ...) KXP_PRINTF_FORMAT(4, 5);

// Labels the calling thread in its later lines as "prefix suffix"; a null suffix leaves the prefix alone.
void LogNameThread(const char* prefix, const char* suffix);

// The cloud is the folder at the address in the environment variable COBALIX_CLOUD_SYNC_URL: https, http on
// this machine, or a file's; without it the one that comes with the product. The manifest of a remote folder
// is its file manifest.json: an object whose members are arrays of
// {"path": relative path, "size": bytes, "sha256": lower-case hex}. Calls block, each wait of them with a
// bound; they never throw, and log why they failed. Any number may run at once.

// Fetches the manifest of a remote folder as JSON text. True with `manifest` filled on success; else it is
// empty. `context` is passed to the matching CloudSyncFetchManifestEnd, which must be called in either case.
bool CloudSyncFetchManifestBegin(const char* remoteFolder, std::string& manifest, void*& context);

// Ends what CloudSyncFetchManifestBegin began. `manifest` is the JSON text that the caller goes on with.
void CloudSyncFetchManifestEnd(const char* remoteFolder, const char* localFolder, const std::string& manifest,
                               void* context);

// Brings the files that `manifest` names from the remote folder into the local folder, which lies under the
// product data directory; those that are there with the right digest are not fetched. False when any of them
// could not be fetched; those after it are then not tried. Nothing is fetched when a path would leave the
// local folder or the manifest is faulty otherwise.
bool CloudSyncObject(const char* remoteFolder, const char* localFolder, const std::string& manifest);

// Fails the calls that are in progress on other threads, which return within a second. Later calls work.
void CloudSyncAbort();

}  // namespace KXP

#pragma GCC visibility pop
