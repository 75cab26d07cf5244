// A game's log of one session: its events, and its rounds with their scores.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "common/json/Json.h"

struct ActivityEvent {
    std::string time;
    std::string name;
    std::string info;
    std::optional<int64_t> round;
};

struct ActivityRound {
    int64_t number = 0;
    std::optional<int64_t> score1;
    std::optional<int64_t> score2;
    std::string time;  // when it started
};

// Members that are missing in the log or have another type have no value and are not written.
struct ActivityData {
    // Throws KXP::JSONFieldError when the log is not an object, or an event or round lacks a required member.
    static ActivityData ParseActivityJSON(const KXP::Value& log);
    // Replaces `out` by an object.
    static void CreateActivityJSONValue(const ActivityData& data, KXP::Value& out, KXP::Allocator& allocator);

    std::optional<std::string> gameName;
    std::optional<int64_t> session;
    std::optional<std::string> playStarted;
    std::optional<std::string> playTime;
    std::optional<std::string> startTime;
    std::optional<std::string> endTime;
    std::optional<std::string> mapFileName;
    std::vector<ActivityEvent> events;
    std::vector<ActivityRound> rounds;
    std::optional<std::string> metaData;
};
