// A stand-in for the file events of macOS: it looks at real folders now and then and reports what has
// changed. A use against the rules of the real functions ends the test program.
#pragma once

#include <cstdint>
#include <string>

namespace fake_events {

enum class Refusal { None, Queue, Stream, Start };
// What the functions refuse from now on.
void Refuse(Refusal refusal);

// An event of every stream.
void Report(const std::string& path, uint32_t flags);

// The objects that were made and not released.
int LiveObjects();

}  // namespace fake_events
