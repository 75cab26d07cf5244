// Runs gallery-host with the fake plug-in.
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

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
    ChildProcess child(WithFake(arguments), {{"FAKE_PLUGIN=" + behaviour}});
    child.Write(input);
    const int status = child.Wait();
    return {status, child.out, child.err};
}

// A run, its status, and a part of an envelope that it sends or of the reason for its failure.
struct Case {
    std::vector<std::string> arguments;
    int status;
    std::string err;
};

inline void ExpectEach(const std::vector<Case>& cases) {
    for (const Case& one : cases) {
        std::vector<std::string> arguments = one.arguments;
        arguments.insert(arguments.end(), {"-d", "trace"});
        const Ended ended = RunHost(arguments);
        SCOPED_TRACE(testing::PrintToString(one.arguments) + ended.err);
        EXPECT_EQ(ended.status, one.status);
        EXPECT_TRUE(Contains(ended.err, one.err));
    }
}
