// What crosses between the library and the container that loads it: one exported function, a record of entry
// calls, and one callback. Containers of other makers compile against this layout; it includes nothing of
// ours.
#pragma once

#include <cstddef>
#include <cstdint>

// The notifications that the container's callback receives, and what its text then holds.
enum ZvCefPluginNotification_t : int {
    ZvCefPluginCommandSucceeded = 1,  // the lifecycle command's method, such as "_CmdStart_"
    ZvCefPluginCommandFailed = 2,     // the command's response as JSON
    ZvCefPluginJsonMessage = 3,       // a message for the pages as JSON
    ZvCefPluginContainerEvent = 5,    // an event of the module as JSON
    ZvCefPluginLog = 6,               // a log line, or an event of the module as JSON
};

// Called from the thread of an entry call and from threads of the library, several at a time. `text` is valid
// during the call only; `context` is the third argument of Initialize.
using ZvCefPluginCallback = void (*)(ZvCefPluginNotification_t notification, const char* text, void* context);

// Ten slots of 64 bits. The entry calls run on one thread of the container, one at a time, and never from
// inside the callback. Lifecycle calls return 0 for failure, 1 for done, 2 for accepted: the end is then
// notified as 1 or 2.
struct ZvCefPluginInfo {
    int64_t version;         // 1
    const char* pluginName;  // the library's file name without its ending; owned by the library
    const char* moduleList;
    int (*Initialize)(ZvCefPluginCallback callback, const char* configJson, void* context);
    int (*Start)();
    int (*Suspend)();
    int (*Resume)();
    int (*Stop)();
    int (*Uninitialize)();
    // Takes one JSON envelope. Throws an exception derived from std::runtime_error for a text that is none.
    int (*OnJsonMessage)(const char* json);
};

static_assert(sizeof(ZvCefPluginInfo) == 80, "ten slots of 64 bits");
static_assert(offsetof(ZvCefPluginInfo, pluginName) == 8, "slot 1");
static_assert(offsetof(ZvCefPluginInfo, moduleList) == 16, "slot 2");
static_assert(offsetof(ZvCefPluginInfo, Initialize) == 24, "slot 3");
static_assert(offsetof(ZvCefPluginInfo, Start) == 32, "slot 4");
static_assert(offsetof(ZvCefPluginInfo, Suspend) == 40, "slot 5");
static_assert(offsetof(ZvCefPluginInfo, Resume) == 48, "slot 6");
static_assert(offsetof(ZvCefPluginInfo, Stop) == 56, "slot 7");
static_assert(offsetof(ZvCefPluginInfo, Uninitialize) == 64, "slot 8");
static_assert(offsetof(ZvCefPluginInfo, OnJsonMessage) == 72, "slot 9");

// The exported symbol, and its type for looking it up by name.
extern "C" ZvCefPluginInfo* ZvCefPluginGetInfo();
using ZvCefPluginGetInfoFn = ZvCefPluginInfo* (*)();
