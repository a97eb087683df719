// global_ipoption: IP option settings per (virtual router, option).
#include "opt_table.h"

namespace nimbet::ipoption {
namespace {

// Row image, 36 bytes: the six record fields at 0..19, createTime at 20,
// lastWriteTime at 28.
constexpr unsigned kCreateTime = 20, kLastWriteTime = 28;

void set_image(const NIMBET_DB_GLOBAL_IPOPTION_ENTRY *rec, uint8_t *image) {
    put_le32(image + 0, rec->vrId);
    put_le32(image + 4, rec->optionType);
    put_le32(image + 8, rec->value1);
    put_le16(image + 12, rec->value2);
    put_le16(image + 14, rec->value3);
    put_le32(image + 16, rec->value4);
    // Unlike the interface table, the stamp comes first and a new row is
    // created at the time of its write.
    const int64_t t = NIMBET_DB_GetSysTime();
    put_le64(image + kLastWriteTime, t);
    if (get_le64(image + kCreateTime) == 0) put_le64(image + kCreateTime, t);
}

void get_image(const uint8_t *image, NIMBET_DB_GLOBAL_IPOPTION_ENTRY *rec) {
    rec->vrId = get_le32(image + 0);
    rec->optionType = get_le32(image + 4);
    rec->value1 = get_le32(image + 8);
    rec->value2 = get_le16(image + 12);
    rec->value3 = get_le16(image + 14);
    rec->value4 = get_le32(image + 16);
}

struct GlobalOption : OptTraits<GlobalOption> {
    using Entry = NIMBET_DB_GLOBAL_IPOPTION_ENTRY;
    using Key = NIMBET_DB_GLOBAL_IPOPTION_KEY;
    static constexpr uint32_t rowLen = 36, keyLen = 8;
    static constexpr uint32_t keyDesc = 0x00010008u;
    static constexpr uint32_t stat = DB_STAT_GLOBAL_IPOPTION;
    static constexpr auto create = db_create_global_ipoption_obj;
    static constexpr auto release = db_release_global_ipoption_object;
    static constexpr auto set_all = db_set_global_ipoption_all_fields;
    static constexpr auto fill = ipoption::set_image;
    static constexpr auto get = ipoption::get_image;

    static Key key_of(const Entry &r) { return {r.vrId, r.optionType}; }
    static void put_key(const Key &k, uint8_t *out) {
        put_le32(out + 0, k.vrId);
        put_le32(out + 4, k.optionType);
    }
    static void log_key(const char *format, uint32_t s, const Key &k) { log_err(format, s, k.vrId, k.optionType); }

    static constexpr const char *msgReadNull = "[ip opt]nimbet db readentryGlobaloption entry is QEX_NULL. para is NULL";
    static constexpr const char *msgReadOpen = "[ip opt]Read global option  create obj failed. ret = %d, vrId = %u, optionType = %u.";
    static constexpr const char *msgReadFail = "[ip opt]Get global option  db failed. ret = %d, vrId = %u, optionType = %u.";
    static constexpr const char *msgDeleteOpen = "[ip opt]Delete option  create obj failed. ret = %d, vrId = %u, optionType = %u.";
    static constexpr const char *msgRemove = "[ip opt]Remove option  db failed. ret = %d, vrId = %u, optionType = %u.";
    static constexpr const char *msgNext = "[ip opt]Get next global ipoption db fail. ret = %d";
};

using Table = OptTable<GlobalOption>;

}  // namespace
}  // namespace nimbet::ipoption

using nimbet::ipoption::Table;

extern "C" {

NIMBET_OPT_ENTRIES(Table, NIMBET_DB_GLOBAL_IPOPTION_ENTRY, NIMBET_DB_GLOBAL_IPOPTION_KEY,
    NIMBET_DB_OptSetGlobalEntryKey,
    NIMBET_DB_OptSetGlobal,
    NIMBET_DB_OptGetGlobal,
    NIMBET_DB_OptWriteGlobalEntry,
    NIMBET_DB_OptReadGlobalEntry,
    NIMBET_DB_OptDeleteGlobalEntry,
    NIMBET_DB_CreateOptGlobalIterator,
    NIMBET_DB_OptGetNextGlobal,
    NIMBET_DB_ReleaseOptGlobalIterator)

}  // extern "C"
