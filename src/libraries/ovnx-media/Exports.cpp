#include "OvnxMedia.h"

extern "C" {

void OvnxMediaRelease(OvnxMediaPicture* picture) {
    delete[] picture->bytes;
    *picture = {};
}
}
