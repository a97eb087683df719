// Table descriptors, generated from schema.odb into tables.cpp.
#pragma once

#include <cstddef>
#include <cstdint>

namespace odb {

enum class FieldType : uint8_t { U8, U8W, U16, U32, U64, I64, Bytes };

struct FieldDesc {
    const char *name;  // accessor suffix; list items carry "<list>_<item>"
    FieldType type;
    uint16_t offset;   // in the row (or in the list entry)
    uint16_t size;
};

// One piece of a key: row bytes [offset, offset+len), or a constant byte.
struct KeyComp {
    int16_t offset;    // -1: constant byte
    uint8_t len;
    uint8_t constant;
};

constexpr unsigned kMaxKeyComps = 6;
constexpr unsigned kMaxIndexes = 3;
constexpr unsigned kMaxKeyLen = 64;

struct KeyDesc {
    uint8_t number;    // 0: primary; 1..5: secondary index number
    uint8_t ncomps;
    uint16_t length;   // bytes of the concatenated key
    KeyComp comps[kMaxKeyComps];
};

struct ListDesc {
    const char *name;
    uint16_t entrySize;
    uint8_t nitems;
    const FieldDesc *items;
};

struct TableDesc {
    const char *name;
    bool image;        // row-image table (all_fields accepted)
    uint16_t rowLen;
    uint8_t nfields;
    const FieldDesc *fields;
    KeyDesc primary;
    uint8_t nindexes;
    KeyDesc indexes[kMaxIndexes];
    const ListDesc *list;  // null: no child list
};

extern const TableDesc kTables[];
extern const unsigned kTableCount;

}  // namespace odb
