#include "zorac.h"

extern "C" const ZorLibraryVersion* zoracGetLibVersion() {
    static constexpr ZorLibraryVersion version{2, 0, "libzorac.so", "2.0", __DATE__};
    return &version;
}
