#include "zors.h"

extern "C" const ZorLibraryVersion* zorsGetLibVersion() {
    static constexpr ZorLibraryVersion version{2, 0, "libzors.so", "2.0", __DATE__};
    return &version;
}
