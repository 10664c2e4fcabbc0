/** \file
 * A list whose elements are found by name without a walk.
 */
#ifndef BXNAMEDLIST_H
#define BXNAMEDLIST_H

#include "foundation/bxlist.h"
#include "foundation/bxstring.h"

#include <iterator>
#include <string>
#include <unordered_map>
#include <utility>

/**
 * A `bxList<T>` with an index by name beside it: `Name` gives an element's name, which must not change while
 * the element is in the list. Elements enter and leave only by `append` and `remove`, which keep the index
 * right. Of elements with the same name the first is found.
 */
template <class T, auto Name>
class bxNamedList : private bxList<T> {
  public:
    using iterator = typename bxList<T>::iterator;
    using bxList<T>::begin;
    using bxList<T>::end;
    using bxList<T>::size;
    using bxList<T>::empty;

    bxNamedList() = default;
    bxNamedList(const bxNamedList&) = delete;
    bxNamedList& operator=(const bxNamedList&) = delete;

    /** The element of that exact name, or the end. */
    iterator find(const bxString& name) {
        const auto found = m_index.find(name.c_str());
        return found == m_index.end() ? this->end() : found->second;
    }
    /** Builds an element at the end. */
    template <class... Arguments>
    T& append(Arguments&&... arguments) {
        this->emplace_back(std::forward<Arguments>(arguments)...);
        const iterator place = std::prev(this->end());
        m_index.emplace(Name(*place).c_str(), place);
        return *place;
    }
    /** Removes an element whose name no other element bears; returns the place that follows. */
    iterator remove(iterator place) {
        m_index.erase(Name(*place).c_str());
        return bxList<T>::erase(place);
    }
    /** Removes the element of that name, if there is one. */
    void remove(const bxString& name) {
        if (const iterator place = find(name); place != this->end())
            remove(place);
    }
    void removeAll() {
        m_index.clear();
        bxList<T>::clear();
    }

  private:
    std::unordered_map<std::string, iterator> m_index;
};

#endif
