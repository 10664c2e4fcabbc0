#include "session/bxkeys.h"

#include <vector>

std::span<const bxKeyRow> bxKeyTable() {
    static const std::vector<bxKeyRow> rows = [] {
        std::vector<bxKeyRow> all;
        for (const auto theme : {bxInputKeys(), bxOutputKeys(), bxRunKeys(), bxExitKeys()})
            all.insert(all.end(), theme.begin(), theme.end());
        return all;
    }();
    return rows;
}
