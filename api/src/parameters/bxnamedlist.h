/** \file
 * A list whose elements are found by name without a walk.
 */
#ifndef BXNAMEDLIST_H
#define BXNAMEDLIST_H

#include "foundation/bxlist.h"
#include "foundation/bxstring.h"

#include <string>
#include <unordered_map>

/**
 * A `bxList<T>` with an index by name beside it: `Name` gives an element's name, which must not change while
 * the element is in the list. Elements enter and leave only by `append` and `remove`, which keep the index
 * right. Of elements with the same name the first is found.
 */
template <class T, auto Name>
class bxNamedList : public bxList<T> {
  public:
    using iterator = typename bxList<T>::iterator;

    bxNamedList() = default;
    bxNamedList(const bxNamedList&) = delete;
    bxNamedList& operator=(const bxNamedList&) = delete;

    /** The element of that exact name, or the end. */
    iterator find(const bxString& name) {
        const auto found = m_index.find(name.c_str());
        return found == m_index.end() ? this->end() : found->second;
    }
    iterator append(const T& element) {
        const iterator place = bxList<T>::insert(this->end(), element);
        m_index.emplace(Name(element).c_str(), place);
        return place;
    }
    /** Removes an element whose name no other element bears; returns the place that follows. */
    iterator remove(iterator place) {
        m_index.erase(Name(*place).c_str());
        return bxList<T>::erase(place);
    }
    void removeAll() {
        m_index.clear();
        bxList<T>::erase(this->begin(), this->end());
    }

  private:
    using bxList<T>::insert;
    using bxList<T>::push_back;
    using bxList<T>::erase;
    using bxList<T>::clear;
    using bxList<T>::merge;
    using bxList<T>::swap;

    std::unordered_map<std::string, iterator> m_index;
};

#endif
