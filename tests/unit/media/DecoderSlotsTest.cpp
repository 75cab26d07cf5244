#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/thumbnails/DecoderSlots.h"

namespace {

// Whoever is not woken hangs here.
TEST(DecoderSlots, WakeWhoeverWaits) {
    DecoderSlots slots;
    std::atomic<bool> cancelled{false};
    std::atomic<bool> never{false};
    for (unsigned i = 0; i < DecoderSlots::kCount; ++i)
        ASSERT_TRUE(slots.Take(never));
    bool cancelledTook = true;
    bool patientTook = false;
    std::thread waiting([&] { cancelledTook = slots.Take(cancelled); });
    std::thread patient([&] { patientTook = slots.Take(never); });
    slots.Cancel(cancelled);
    waiting.join();
    EXPECT_FALSE(cancelledTook);
    slots.Free();
    patient.join();
    EXPECT_TRUE(patientTook);
    // The cancelled one took no slot with it.
    slots.Free();
    EXPECT_TRUE(slots.Take(never));
}

}  // namespace
