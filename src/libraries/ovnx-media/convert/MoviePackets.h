// The packets of an MP4 or MOV file, in the order in which they lie in it: it is read once, from its
// beginning to its end, and their tables are not kept.
#pragma once

#include "libraries/ovnx-media/convert/Convert.h"
#include "libraries/ovnx-media/cut/SourceMovie.h"

namespace ovnxmedia {

// Of pictures and sound, the first track number 0. Those of one track come in their order, and each may come
// in several parts. Throws Failure.
void ReadMoviePackets(SourceMovie& movie, const PacketListener& listener, const Budget& budget);

}  // namespace ovnxmedia
