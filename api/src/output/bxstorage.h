/** \file
 * Room for the global objects that every static initialiser may use.
 */
#ifndef BXSTORAGE_H
#define BXSTORAGE_H

/** Room for an object that is built and destroyed by hand, so that a reference to it is a constant. */
template <class T>
union bxStorage {
    constexpr bxStorage() : none() {}
    ~bxStorage() {}
    char none;
    T object;
};

#endif
