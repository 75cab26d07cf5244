// Runs gallery-host with the fake plug-in.
#pragma once

#include <string>
#include <vector>

#include "tests/host/ChildProcess.h"

struct Ended {
    int status;
    std::string out;
    std::string err;
};

inline std::vector<std::string> WithFake(std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--plugin", FAKE_PLUGIN_PATH});
    return arguments;
}

inline bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// `behaviour` is for the fake plug-in.
inline Ended RunHost(const std::vector<std::string>& arguments, const std::string& input = {},
                     const std::string& behaviour = {}) {
    ChildProcess child(WithFake(arguments), {{"FAKE_PLUGIN=" + behaviour}, false});
    child.Write(input);
    const int status = child.Wait();
    return {status, child.out, child.err};
}
