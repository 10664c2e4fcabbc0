/** \file
 * The doubly linked list of the harness.
 */
#ifndef BXLIST_H
#define BXLIST_H

#include <list>

/** A list whose size is an int. Lists of pointers never delete what the pointers point to. */
template <class T>
class bxList : public std::list<T> {
  public:
    using std::list<T>::list;
    bxList() = default;
    bxList(const bxList&) = default;
    bxList(bxList&&) noexcept = default;
    bxList& operator=(const bxList&) = default;
    bxList& operator=(bxList&&) noexcept = default;
    virtual ~bxList() = default;

    int size() const { return static_cast<int>(std::list<T>::size()); }
};

#endif
