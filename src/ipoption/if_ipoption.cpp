// if_ipoption: IP option settings per (virtual router, interface, option).
#include "opt_table.h"

namespace nimbet::ipoption {
namespace {

// Row image, 40 bytes: the seven record fields at 0..23, createTime at 24,
// lastWriteTime at 32.
constexpr unsigned kCreateTime = 24, kLastWriteTime = 32;

void set_image(const NIMBET_DB_IF_IPOPTION_ENTRY *rec, uint8_t *image) {
    // An image without a creation time inherits the write time it holds.
    if (get_le64(image + kCreateTime) == 0) put_le64(image + kCreateTime, get_le64(image + kLastWriteTime));
    put_le32(image + 0, rec->vrId);
    put_le32(image + 4, rec->ifIndex);
    put_le32(image + 8, rec->optionType);
    put_le32(image + 12, rec->value1);
    put_le16(image + 16, rec->value2);
    put_le16(image + 18, rec->value3);
    put_le32(image + 20, rec->value4);
    put_le64(image + kLastWriteTime, NIMBET_DB_GetSysTime());
}

void get_image(const uint8_t *image, NIMBET_DB_IF_IPOPTION_ENTRY *rec) {
    rec->vrId = get_le32(image + 0);
    rec->ifIndex = get_le32(image + 4);
    rec->optionType = get_le32(image + 8);
    rec->value1 = get_le32(image + 12);
    rec->value2 = get_le16(image + 16);
    rec->value3 = get_le16(image + 18);
    rec->value4 = get_le32(image + 20);
}

struct IfOption : OptTraits<IfOption> {
    using Entry = NIMBET_DB_IF_IPOPTION_ENTRY;
    using Key = NIMBET_DB_IF_IPOPTION_KEY;
    static constexpr uint32_t rowLen = 40, keyLen = 12;
    static constexpr uint32_t keyDesc = 0x0001000Cu;
    static constexpr uint32_t stat = DB_STAT_IF_IPOPTION;
    static constexpr auto create = db_create_if_ipoption_obj;
    static constexpr auto release = db_release_if_ipoption_object;
    static constexpr auto set_all = db_set_if_ipoption_all_fields;
    static constexpr auto fill = ipoption::set_image;
    static constexpr auto get = ipoption::get_image;

    static Key key_of(const Entry &r) { return {r.vrId, r.ifIndex, r.optionType}; }
    static void put_key(const Key &k, uint8_t *out) {
        put_le32(out + 0, k.vrId);
        put_le32(out + 4, k.ifIndex);
        put_le32(out + 8, k.optionType);
    }
    static void log_key(const char *format, uint32_t s, const Key &k) {
        log_err(format, s, k.vrId, k.ifIndex, k.optionType);
    }

    static constexpr const char *msgReadNull = "[ip opt]nimbet db readentryintoption entry is QEX_NULL. para is NULL";
    static constexpr const char *msgReadOpen = "[ip opt]Read interface option  create obj failed. ret = %d, vrId = %u, ifIndex = %u,             optionType = %u.";
    static constexpr const char *msgReadFail = "[ip opt]Get interface option  db failed. ret = %d, vrId = %u, ifIndex = %u,                 optionType = %u.";
    static constexpr const char *msgDeleteOpen = "[ip opt]Delete option  create obj failed. ret = %d, vrId = %u, ifIndex = %u,             optionType = %u.";
    static constexpr const char *msgRemove = "[ip opt]Remove option  db failed. ret = %d, vrId = %u, ifIndex = %u, optionType = %u.";
    static constexpr const char *msgNext = "[ip opt]Get next int ipoption db fail. ret = %d";
};

using Table = OptTable<IfOption>;

}  // namespace
}  // namespace nimbet::ipoption

using nimbet::ipoption::Table;

extern "C" {

NIMBET_OPT_ENTRIES(Table, NIMBET_DB_IF_IPOPTION_ENTRY, NIMBET_DB_IF_IPOPTION_KEY,
    NIMBET_DB_OptSetIfEntryKey,
    NIMBET_DB_OptSetIf,
    NIMBET_DB_OptGetIf,
    NIMBET_DB_OptWriteIfEntry,
    NIMBET_DB_OptReadIfEntry,
    NIMBET_DB_OptDeleteIfEntry,
    NIMBET_DB_CreateOptIfIterator,
    NIMBET_DB_OptGetNextIf,
    NIMBET_DB_ReleaseOptIfIterator)

}  // extern "C"
