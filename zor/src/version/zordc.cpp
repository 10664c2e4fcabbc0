#include "zordc.h"

extern "C" const ZorLibraryVersion* zordcGetLibVersion() {
    static constexpr ZorLibraryVersion version{2, 0, "libzordc.so", "2.0", __DATE__};
    return &version;
}
