// The harness's one list: doubly linked, with an end node that always exists, so that an iterator to the end stays good
// for the whole life of the list. The size is found by walking; lists here are short or are walked anyway.
#pragma once

#include <type_traits>
#include <utility>

/// Doubly linked list of values with one end node, which holds a default value of its own.
template <class T>
class krList {
    struct Node {
        Node* next = this;
        Node* prev = this;
        T value{};
    };

public:
    /// A place in the list; `Link` is Node, or const Node where the values are only read.
    template <class Link>
    class Place {
        using Value = std::conditional_t<std::is_const_v<Link>, const T, T>;

    public:
        Place() = default;
        explicit Place(Link* node) : m_node(node) {}
        Value& operator*() const { return m_node->value; }
        Value* operator->() const { return &m_node->value; }
        Place& operator++() {
            m_node = m_node->next;
            return *this;
        }
        Place operator++(int) {
            Place old = *this;
            m_node = m_node->next;
            return old;
        }
        Place& operator--() {
            m_node = m_node->prev;
            return *this;
        }
        bool operator==(const Place& other) const { return m_node == other.m_node; }
        /// Every place of a list can be read.
        operator Place<const Node>() const // NOLINT(google-explicit-constructor)
            requires(!std::is_const_v<Link>) {
            return Place<const Node>(m_node);
        }

    private:
        friend class krList;
        Link* m_node = nullptr;
    };
    using iterator = Place<Node>;
    using const_iterator = Place<const Node>;

    krList() : m_end(new Node) {}
    krList(const krList& other) : krList() { append(other); }
    krList& operator=(const krList& other) {
        if (this != &other) {
            clear();
            append(other);
        }
        return *this;
    }
    virtual ~krList() {
        clear();
        delete m_end;
    }

    iterator begin() { return iterator(m_end->next); }
    iterator end() { return iterator(m_end); }
    const_iterator begin() const { return const_iterator(m_end->next); }
    const_iterator end() const { return const_iterator(m_end); }

    /// Puts `value` before `place` and returns its position.
    iterator insert(iterator place, const T& value) {
        Node* node = new Node;
        node->value = value;
        link(node, place.m_node);
        return iterator(node);
    }
    /// Appends one value: an insert before the end node.
    void append(const T& value) { insert(end(), value); }

    /// Removes one value and returns the position after it. The end node can't be removed.
    iterator erase(iterator place) {
        Node* node = place.m_node;
        Node* next = node->next;
        if (node != m_end) {
            node->prev->next = node->next;
            node->next->prev = node->prev;
            delete node;
        }
        return iterator(next);
    }
    iterator erase(iterator first, iterator last) {
        while (!(first == last)) {
            first = erase(first);
        }
        return last;
    }
    void clear() { erase(begin(), end()); }

    bool empty() const { return m_end->next == m_end; }
    /// The number of values, found by walking.
    int size() const {
        int count = 0;
        for (const Node* node = m_end->next; node != m_end; node = node->next) {
            ++count;
        }
        return count;
    }
    /// Exchanges the contents of two lists in constant time.
    void swap(krList& other) { std::swap(m_end, other.m_end); }
    /// Moves the node at `from` of `other` in front of `place`, without a copy.
    void splice(iterator place, krList& /*other*/, iterator from) {
        Node* node = from.m_node;
        node->prev->next = node->next;
        node->next->prev = node->prev;
        link(node, place.m_node);
    }

private:
    void append(const krList& other) {
        for (const T& value : other) {
            append(value);
        }
    }
    static void link(Node* node, Node* before) {
        node->next = before;
        node->prev = before->prev;
        before->prev->next = node;
        before->prev = node;
    }

    Node* m_end;
};

/// Appends to a list that the first registration before `main` makes. Gives 1, for an initialiser that registers.
template <class List, class Item>
int krRegister(List*& list, const Item& item) {
    if (list == nullptr) {
        list = new List;
    }
    list->append(item);
    return 1;
}
