// Makes an MP4 file of a recording in another container, by copying its packets.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "libraries/ovnx-media/Budget.h"

namespace ovnxmedia {

struct PacketListener {
    // The bytes of a track as an MP4 has them, in their order. Where they have an owner, the listener
    // may keep it, and returns true then: the bytes live until it is passed to ReleasePacket.
    std::function<bool(uint32_t track, std::string_view bytes, void* owner)> onPacket;
    // So many bytes of the source were read since the last call.
    std::function<void(uint64_t bytes)> onRead;
    // What was heard so far counts no more: it begins anew.
    std::function<void()> onRestart;
};

// As OvnxMediaConvert and OvnxMediaPackets; both throw Failure.
void Convert(int input, int output, const PacketListener& listener, const Budget& budget);
void ReadPackets(int input, const PacketListener& listener, const Budget& budget);
// Any thread.
void ReleasePacket(void* owner);

}  // namespace ovnxmedia
