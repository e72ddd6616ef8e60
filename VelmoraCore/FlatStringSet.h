#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmora {

// An ordered set of strings kept as one sorted vector. The practice record
// holds one day key per practised day, copies itself at every change and
// checks every key at every save: a vector copies in one allocation and is
// walked without chasing nodes, where a tree pays per element. Insertion in
// the middle moves the tail, which is cheap for the one day a noticing adds
// (almost always the last); building from many strings at once goes through
// the vector constructor, which sorts once.
class FlatStringSet {
public:
    using value_type = std::string;
    using size_type = std::size_t;
    using const_iterator = std::vector<std::string>::const_iterator;
    // Elements are never changed in place: that could break the order.
    using iterator = const_iterator;
    using const_reverse_iterator = std::vector<std::string>::const_reverse_iterator;

    FlatStringSet() = default;

    FlatStringSet(std::initializer_list<std::string> strings)
        : m_strings(strings)
    {
        sortAndDeduplicate();
    }

    // Takes any strings in any order, repeats included.
    explicit FlatStringSet(std::vector<std::string> strings)
        : m_strings(std::move(strings))
    {
        sortAndDeduplicate();
    }

    // False, and nothing changes, when the set already holds `string`.
    bool insert(std::string string)
    {
        // Appending is the usual case (today's day key is the largest), so it
        // is checked before searching.
        if (m_strings.empty() || m_strings.back() < string) {
            m_strings.push_back(std::move(string));
            return true;
        }
        const auto position = lowerBound(string);
        if (position != m_strings.end() && *position == string)
            return false;
        m_strings.insert(position, std::move(string));
        return true;
    }

    bool emplace(std::string_view string) { return insert(std::string(string)); }

    [[nodiscard]] const_iterator find(std::string_view string) const
    {
        const auto position = lowerBound(string);
        return position != m_strings.end() && *position == string ? position : m_strings.end();
    }

    [[nodiscard]] bool contains(std::string_view string) const { return find(string) != m_strings.end(); }

    const_iterator erase(const_iterator position) { return m_strings.erase(position); }

    // The number of strings removed: 0 or 1.
    size_type erase(std::string_view string)
    {
        const auto position = find(string);
        if (position == m_strings.end())
            return 0;
        m_strings.erase(position);
        return 1;
    }

    [[nodiscard]] size_type size() const { return m_strings.size(); }
    [[nodiscard]] bool empty() const { return m_strings.empty(); }
    [[nodiscard]] const_iterator begin() const { return m_strings.begin(); }
    [[nodiscard]] const_iterator end() const { return m_strings.end(); }
    [[nodiscard]] const_reverse_iterator rbegin() const { return m_strings.rbegin(); }
    [[nodiscard]] const_reverse_iterator rend() const { return m_strings.rend(); }

    bool operator==(const FlatStringSet&) const = default;

private:
    [[nodiscard]] std::vector<std::string>::const_iterator lowerBound(std::string_view string) const
    {
        return std::lower_bound(m_strings.begin(), m_strings.end(), string, std::less<>());
    }

    void sortAndDeduplicate()
    {
        std::sort(m_strings.begin(), m_strings.end());
        m_strings.erase(std::unique(m_strings.begin(), m_strings.end()), m_strings.end());
    }

    std::vector<std::string> m_strings;
};

} // namespace velmora
