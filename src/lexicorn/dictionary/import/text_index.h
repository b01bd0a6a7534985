#pragma once

// A hash set of item numbers found by the items' text, for the hundreds of
// thousands of headwords and word forms of an import. Items live elsewhere
// (`textOf` gives an item's text); the table holds only their numbers and
// hashes, eight bytes a place, open addressing at most half full.

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

namespace lexicorn::dictimport {

class TextIndex {
public:
    static constexpr uint32_t none = UINT32_MAX;

    static uint32_t hashOf(std::string_view text)
    {
        const size_t h = std::hash<std::string_view>{}(text);
        return uint32_t(h ^ (h >> 32));
    }

    // Brings the place of a hash into the cache ahead of a lookup: a table
    // of millions of places is mostly out of it, and lookups done in a
    // batch then wait for memory once rather than one after the other.
    void prefetch(uint32_t hash) const
    {
        if (!places_.empty())
            __builtin_prefetch(&places_[hash & mask()]);
    }

    // The item stored under the text, or none.
    template <typename TextOf>
    uint32_t find(std::string_view text, TextOf textOf) const
    {
        return find(text, hashOf(text), textOf);
    }

    template <typename TextOf>
    uint32_t find(std::string_view text, uint32_t hash, TextOf textOf) const
    {
        if (places_.empty())
            return none;
        for (size_t at = hash & mask(); places_[at].item != none; at = (at + 1) & mask()) {
            if (places_[at].hash == hash && textOf(places_[at].item) == text)
                return places_[at].item;
        }
        return none;
    }

    // The item already stored under the text, or `item` once it is stored.
    template <typename TextOf>
    uint32_t findOrAdd(std::string_view text, uint32_t item, TextOf textOf)
    {
        return findOrAdd(text, hashOf(text), item, textOf);
    }

    template <typename TextOf>
    uint32_t findOrAdd(std::string_view text, uint32_t hash, uint32_t item, TextOf textOf)
    {
        if ((count_ + 1) * 2 > places_.size())
            grow();
        size_t at = hash & mask();
        for (; places_[at].item != none; at = (at + 1) & mask()) {
            if (places_[at].hash == hash && textOf(places_[at].item) == text)
                return places_[at].item;
        }
        places_[at] = {hash, item};
        ++count_;
        return item;
    }

private:
    struct Place {
        uint32_t hash = 0;
        uint32_t item = none;
    };

    size_t mask() const { return places_.size() - 1; }

    void grow()
    {
        std::vector<Place> old(places_.empty() ? 1024 : places_.size() * 2);
        old.swap(places_);
        for (const Place& place : old) {
            if (place.item == none)
                continue;
            size_t at = place.hash & mask();
            while (places_[at].item != none)
                at = (at + 1) & mask();
            places_[at] = place;
        }
    }

    std::vector<Place> places_;
    size_t count_ = 0;
};

}  // namespace lexicorn::dictimport
