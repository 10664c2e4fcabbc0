#include "rows.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace {

using Key = std::tuple<std::string, std::string, int>;

std::map<Key, const Combination*> byKey(const Examination& side) {
    std::map<Key, const Combination*> result;
    std::map<std::pair<std::string, std::string>, int> seen;
    for (const Combination& c : side.combinations)
        result[{c.function, c.parameters, seen[{c.function, c.parameters}]++}] = &c;
    return result;
}

/** Marks a longest ascending subsequence by the second side's places (Fredman 1975, patience sorting). */
std::vector<bool> inStep(const std::vector<PairRow>& rows) {
    std::vector<std::size_t> ends; // the row that ends the best sequence of each length
    std::vector<std::size_t> previous(rows.size());
    const auto before = [&](std::size_t row, bxTurnsForm::Place place) {
        return rows[row].after().place < place;
    };
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto at = std::lower_bound(ends.begin(), ends.end(), rows[i].after().place, before);
        previous[i] = at == ends.begin() ? i : *(at - 1);
        if (at == ends.end())
            ends.push_back(i);
        else
            *at = i;
    }
    std::vector<bool> marked(rows.size());
    for (std::size_t i = ends.empty() ? rows.size() : ends.back(); i < rows.size(); i = previous[i]) {
        marked[i] = true;
        if (previous[i] == i)
            break;
    }
    return marked;
}

} // namespace

PairRows matchRows(const Examination& before, const Examination& after) {
    PairRows result;
    const auto first = byKey(before);
    auto second = byKey(after);
    std::vector<PairRow> common;
    for (const auto& [key, combination] : first) {
        const auto other = second.find(key);
        if (other == second.end()) {
            result.only[0].push_back(combination);
        } else {
            common.push_back({{combination, other->second}});
            second.erase(other);
        }
    }
    for (const auto& [key, combination] : second)
        result.only[1].push_back(combination);
    const auto placed = [](int side) {
        return [side](const auto& a, const auto& b) {
            if constexpr (requires { a->place; })
                return a->place < b->place;
            else
                return a.sides[static_cast<std::size_t>(side)]->place <
                       b.sides[static_cast<std::size_t>(side)]->place;
        };
    };
    std::sort(common.begin(), common.end(), placed(0));
    for (auto& only : result.only)
        std::sort(only.begin(), only.end(), placed(0));
    const std::vector<bool> kept = inStep(common);
    for (std::size_t i = 0; i < common.size(); ++i)
        (kept[i] ? result.both : result.crossed).push_back(common[i]);
    return result;
}
