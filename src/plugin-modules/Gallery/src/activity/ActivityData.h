// What a game has logged of one session: its events and the rounds with their scores.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "common/Json.h"

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
    std::string time;  // of its start
};

// Members that a log does not tell, or not in their type, have no value and are not written.
struct ActivityData {
    // Throws KXP::JSONFieldError for a log that is no object, or one of whose events or rounds lacks a member
    // that it must have.
    static ActivityData ParseActivityJSON(const KXP::Value& log);
    // `out` becomes an object, whatever is in it.
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
