/** \file
 * The doubly linked list of the harness.
 */
#ifndef BXLIST_H
#define BXLIST_H

#include <cstddef>
#include <iterator>
#include <type_traits>
#include <utility>

/**
 * A doubly linked list that ends in a sentinel node. Inserting and erasing anywhere takes constant time and
 * leaves iterators to other elements valid. Lists of pointers never delete what the pointers point to.
 */
template <class T>
class bxList {
    struct Node {
        Node* next = nullptr;
        Node* prev = nullptr;
        T value{};
    };

    template <bool constant>
    class Iterator {
      public:
        using iterator_category = std::bidirectional_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using reference = std::conditional_t<constant, const T&, T&>;
        using pointer = std::conditional_t<constant, const T*, T*>;

        Iterator() = default;
        /** An iterator serves where a constant one is asked for. */
        operator Iterator<true>() const requires(!constant) { return Iterator<true>(m_node); }

        reference operator*() const { return m_node->value; }
        pointer operator->() const { return &m_node->value; }
        Iterator& operator++() { return m_node = m_node->next, *this; }
        Iterator operator++(int) { return std::exchange(*this, Iterator(m_node->next)); }
        Iterator& operator--() { return m_node = m_node->prev, *this; }
        Iterator operator--(int) { return std::exchange(*this, Iterator(m_node->prev)); }
        friend bool operator==(const Iterator& a, const Iterator& b) { return a.m_node == b.m_node; }

      private:
        friend class bxList;
        friend class Iterator<!constant>;
        explicit Iterator(Node* node) : m_node(node) {}
        Node* m_node = nullptr;
    };

  public:
    using value_type = T;
    using iterator = Iterator<false>;
    using const_iterator = Iterator<true>;

    bxList() : m_first(new Node), m_end(m_first) {}
    bxList(const bxList& other) : bxList() { append(other); }
    bxList(bxList&& other) : bxList() { swap(other); }
    bxList& operator=(const bxList& other) {
        if (this != &other) {
            clear();
            append(other);
        }
        return *this;
    }
    bxList& operator=(bxList&& other) noexcept {
        swap(other);
        return *this;
    }
    virtual ~bxList() {
        clear();
        delete m_end;
    }

    iterator begin() { return iterator(m_first); }
    iterator end() { return iterator(m_end); }
    const_iterator begin() const { return const_iterator(iterator(m_first)); }
    const_iterator end() const { return const_iterator(iterator(m_end)); }
    bool empty() const { return m_first == m_end; }
    /** The number of elements, counted by walking. */
    int size() const {
        int n = 0;
        for (const Node* node = m_first; node != m_end; node = node->next)
            ++n;
        return n;
    }

    /** Inserts before `pos` and returns the place of the new element; before end() it appends. */
    iterator insert(iterator pos, const T& value) {
        Node* node = new Node{nullptr, nullptr, value};
        link(pos.m_node, node);
        return iterator(node);
    }
    void push_back(const T& value) { insert(end(), value); }

    /** Returns the place that follows. */
    iterator erase(iterator pos) {
        Node* following = pos.m_node->next;
        unlink(pos.m_node);
        delete pos.m_node;
        return iterator(following);
    }
    iterator erase(iterator first, iterator last) {
        while (first != last)
            first = erase(first);
        return last;
    }
    void clear() { erase(begin(), end()); }

    /** Takes all elements of `other`, both lists being in order; of equal elements those of this list come
     * first. */
    void merge(bxList& other, bool (*less)(T&, T&)) {
        if (this == &other)
            return;
        Node* mine = m_first;
        while (mine != m_end && !other.empty())
            if (less(other.m_first->value, mine->value))
                moveBefore(mine, other);
            else
                mine = mine->next;
        while (!other.empty())
            moveBefore(m_end, other);
    }

    /** Sorts in n log n steps; equal elements keep their order. */
    void sort(bool (*less)(T&, T&)) { sort(size(), less); }

    void swap(bxList& other) noexcept {
        std::swap(m_first, other.m_first);
        std::swap(m_end, other.m_end);
    }

  private:
    void append(const bxList& other) {
        for (const T& value : other)
            push_back(value);
    }
    void link(Node* pos, Node* node) {
        node->next = pos;
        node->prev = pos->prev;
        (pos->prev ? pos->prev->next : m_first) = node;
        pos->prev = node;
    }
    void unlink(Node* node) {
        (node->prev ? node->prev->next : m_first) = node->next;
        node->next->prev = node->prev;
    }
    /** Moves the first element of another list in front of `pos`. */
    void moveBefore(Node* pos, bxList& other) {
        Node* node = other.m_first;
        other.unlink(node);
        link(pos, node);
    }
    void sort(int n, bool (*less)(T&, T&)) {
        if (n < 2)
            return;
        bxList front;
        for (int i = 0; i < n / 2; ++i)
            front.moveBefore(front.m_end, *this);
        front.sort(n / 2, less);
        sort(n - n / 2, less);
        front.merge(*this, less);
        swap(front);
    }

    Node* m_first;
    Node* m_end;
};

#endif
