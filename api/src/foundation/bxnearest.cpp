#include "foundation/bxnearest.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace {

/** The least number of letters to insert, leave out or change (Wagner and Fischer), a row at a time. */
int distance(std::string_view a, std::string_view b) {
    std::vector<int> row(b.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (const char c : a) {
        int diagonal = row[0]++;
        for (std::size_t j = 1; j < row.size(); ++j) {
            const int changed = diagonal + (c != b[j - 1]);
            diagonal = row[j];
            row[j] = std::min({changed, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row.back();
}

} // namespace

bxString bxNearestName(const bxString& word, const bxStringList& names) {
    const bxString sought = word.toLower();
    bxString nearest;
    int least = std::max(1, word.length() / 3) + 1;
    for (const bxString& name : names) {
        const int d = distance(sought.view(), name.toLower().view());
        if (d < least) {
            least = d;
            nearest = name;
        }
    }
    return nearest;
}
