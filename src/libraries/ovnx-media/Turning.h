// Turns pictures the way up that their orientation says.
#pragma once

#include "libraries/ovnx-media/Allowance.h"
#include "libraries/ovnx-media/ExifOrientation.h"
#include "libraries/ovnx-media/Picture.h"

namespace ovnxmedia {

// The box for a picture as it is stored that fits `box` once it is turned.
inline Size BoxAsStored(Size box, const Orientation& orientation) {
    return orientation.swapsSides ? Size{box.height, box.width} : box;
}

// An upright picture is returned as it is; a copy of others is deducted from the allowance. Throws Failure.
Picture Turn(Picture picture, const Orientation& orientation, Allowance& allowance);

}  // namespace ovnxmedia
