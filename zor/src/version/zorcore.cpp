#include "zorcore.h"

extern "C" const ZorLibraryVersion* zorcoreGetLibVersion() {
    static constexpr ZorLibraryVersion version{2, 0, "libzorcore.so", "2.0", __DATE__};
    return &version;
}
