// Stands for the codecs of a browser: what libovnxmedia links, under the same names, and of no use to it.
#include <cstdlib>

#define FOREIGN(name)                                               \
    extern "C" __attribute__((visibility("default"))) void name() { \
        std::abort();                                               \
    }

FOREIGN(av_packet_alloc)
FOREIGN(avcodec_send_packet)
FOREIGN(avformat_open_input)
FOREIGN(avio_alloc_context)
FOREIGN(sws_getContext)
FOREIGN(png_create_write_struct)
FOREIGN(tjInitDecompress)
