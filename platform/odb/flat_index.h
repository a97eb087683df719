// Open-addressing hash index from key bytes to a 32-bit id (row slot or
// bucket number). The keys themselves stay where they live (in the row pool
// or in a bucket), so a cell is 8 bytes: the id and 32 bits of the hash,
// which screens out almost every foreign key before a byte compare.
// Linear probing, power-of-two capacity, load factor at most 7/8, and
// backward-shift deletion (no tombstones, so lookups never degrade).
#pragma once

#include <cstdint>
#include <algorithm>
#include <cstring>
#include <vector>

namespace odb {

inline uint64_t mix64(uint64_t a, uint64_t b) {
    const unsigned __int128 r = static_cast<unsigned __int128>(a) * b;
    return static_cast<uint64_t>(r) ^ static_cast<uint64_t>(r >> 64);
}

inline uint64_t load_u64(const uint8_t *p) {
    uint64_t v;
    std::memcpy(&v, p, 8);
    return v;
}

// Short keys (at most 64 bytes here): fold 8 bytes at a time through a
// 64x64->128 multiply; good dispersion for the low bits we index with.
inline uint64_t hash_bytes(const uint8_t *p, size_t n) {
    constexpr uint64_t k0 = 0x9E3779B97F4A7C15ull;
    constexpr uint64_t k1 = 0xC2B2AE3D27D4EB4Full;
    const size_t total = n;
    uint64_t h = k1 ^ (n * k0);
    while (n >= 8) {
        h = mix64(h ^ load_u64(p), k0);
        p += 8;
        n -= 8;
    }
    if (n > 0) {
        // The tail in a register: an 8-byte load ending at the key's last
        // byte, shifted down; a copy of a run-time length would go through
        // memory and stall the lookups that follow.
        uint64_t t = 0;
        if (total >= 8) {
            t = load_u64(p + n - 8) >> (64 - 8 * n);
        } else {
            for (size_t i = 0; i < n; ++i) t |= static_cast<uint64_t>(p[i]) << (8 * i);
        }
        h = mix64(h ^ t, k1);
    }
    return mix64(h, k0);
}

class FlatIndex {
public:
    static constexpr uint32_t kEmpty = 0xFFFFFFFFu;

    size_t size() const { return size_; }

    // Make room for one more entry with this id; may throw std::bad_alloc
    // and changes nothing then.
    void reserve_for(uint32_t id) {
        if (id >= hashes_.size()) hashes_.resize(std::max<size_t>(static_cast<size_t>(id) + 1, hashes_.size() * 2));
        if ((size_ + 1) * 8 > cells_.size() * 7) rehash(cells_.empty() ? 16 : cells_.size() * 2);
    }

    // Find the id whose key equals the probe; eq(id) compares the stored key.
    // probes counts the full key compares made (entries examined).
    template <class Eq>
    uint32_t find(uint64_t hash, Eq &&eq, uint64_t &probes) const {
        if (cells_.empty()) return kEmpty;
        const uint32_t tag = static_cast<uint32_t>(hash >> 32);
        for (size_t i = hash & mask_;; i = (i + 1) & mask_) {
            const Cell &c = cells_[i];
            if (c.id == kEmpty) return kEmpty;
            if (c.tag == tag) {
                ++probes;
                if (eq(c.id)) return c.id;
            }
        }
    }

    // Insert an id known to be absent; reserve_for(id) must have been called.
    void insert(uint32_t id, uint64_t hash) noexcept {
        hashes_[id] = hash;
        const uint32_t tag = static_cast<uint32_t>(hash >> 32);
        size_t i = hash & mask_;
        while (cells_[i].id != kEmpty) i = (i + 1) & mask_;
        cells_[i] = Cell{id, tag};
        ++size_;
    }

    uint64_t hash_of(uint32_t id) const { return hashes_[id]; }

    // Remove the cell holding id.
    void erase(uint32_t id) noexcept {
        size_t i = hashes_[id] & mask_;
        while (cells_[i].id != id) i = (i + 1) & mask_;
        // Backward shift: pull later cells of the run into the hole unless
        // their home slot lies cyclically after the hole.
        size_t hole = i;
        for (size_t j = (i + 1) & mask_; cells_[j].id != kEmpty; j = (j + 1) & mask_) {
            const size_t home = hashes_[cells_[j].id] & mask_;
            const bool stays = hole <= j ? (hole < home && home <= j) : (hole < home || home <= j);
            if (!stays) {
                cells_[hole] = cells_[j];
                hole = j;
            }
        }
        cells_[hole] = Cell{kEmpty, 0};
        --size_;
    }

private:
    struct Cell {
        uint32_t id;
        uint32_t tag;
    };

    void rehash(size_t capacity) {
        std::vector<Cell> fresh(capacity, Cell{kEmpty, 0});
        const size_t mask = capacity - 1;
        for (const Cell &c : cells_) {
            if (c.id == kEmpty) continue;
            size_t i = hashes_[c.id] & mask;
            while (fresh[i].id != kEmpty) i = (i + 1) & mask;
            fresh[i] = c;
        }
        cells_.swap(fresh);
        mask_ = mask;
    }

    std::vector<Cell> cells_;
    std::vector<uint64_t> hashes_;
    size_t size_ = 0;
    size_t mask_ = 0;
};

}  // namespace odb
