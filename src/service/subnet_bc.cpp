// subnet_bc: subnet-directed broadcast settings. The four flag bytes are
// stored in another order than the record's; the caller's own 36 bytes are
// never read or written. A key read without a row answers 60.
#include "../foundation/image_table.h"
#include "../foundation/walk.h"

namespace nimbet::service {
namespace {

void fill(const NIMBET_DB_SUB_BC_ENTRY *r, uint8_t *img) {
    put_le32(img + 0, r->key1);
    put_le32(img + 4, r->key2);
    put_le32(img + 8, r->value1);
    put_le32(img + 12, r->value2);
    img[16] = r->flag2;
    img[17] = r->flag4;
    img[18] = r->flag1;
    img[19] = r->flag3;
}

void get(const uint8_t *img, NIMBET_DB_SUB_BC_ENTRY *r) {
    r->key1 = get_le32(img + 0);
    r->key2 = get_le32(img + 4);
    r->value1 = get_le32(img + 8);
    r->value2 = get_le32(img + 12);
    r->flag2 = img[16];
    r->flag4 = img[17];
    r->flag1 = img[18];
    r->flag3 = img[19];
}

struct SubBc : StatusMessages<SubBc> {
    using Entry = NIMBET_DB_SUB_BC_ENTRY;
    static constexpr uint32_t rowLen = 28, keyLen = 8, keyDesc = 0x00010008u, stat = DB_STAT_SUBNET_BC;
    static constexpr uint32_t missingRow = NIMBET_DB_ITER_END;
    static constexpr auto create = db_create_subnet_bc_obj;
    static constexpr auto release = db_release_subnet_bc_object;
    static constexpr auto set_all = db_set_subnet_bc_all_fields;
    static constexpr auto fill = service::fill;
    static constexpr auto get = service::get;
    static uint32_t build_key(const Entry &r, uint8_t *k) {
        put_le32(k, r.key1);
        put_le32(k + 4, r.key2);
        return 0;
    }
    static constexpr const char *msgOpen = "Get create subnet bc obj fail. ret = %d";
    static constexpr const char *msgWrite = "Write sub bc db fail. ret = %d";
    static constexpr const char *msgRead = "Get sub bc db fail. ret = %d";
    static constexpr const char *msgRemove = "Remove sub bc db fail. ret = %d";
};

using Table = ImageTable<SubBc>;

// Whole-table and by-group walks share the steps; neither logs its set-up.
constexpr Walk kWalk = {SubBc::create, SubBc::release, SubBc::stat, nullptr, "Get next sub bc db fail. ret = %d",
                        SubBc::msgRead, nullptr, 0, 0};
constexpr uint32_t kGroupKeyDesc = 0x01090004u;

}  // namespace
}  // namespace nimbet::service

using namespace nimbet::service;

extern "C" {

NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreateSubBcIterator(void) { return nimbet::walk_create(kWalk); }

NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreateSubBcIteratorByGroupId(uint32_t groupId) {
    uint8_t key[4];
    nimbet::put_le32(key, groupId);
    return nimbet::walk_create_keyed(kWalk, kGroupKeyDesc, key);
}

NIMBET_DB_API void NIMBET_DB_ReleaseSubBcIterator(NIMBET_DB_ITER_INFO *iter) { nimbet::walk_release(kWalk, iter); }

NIMBET_DB_API uint32_t NIMBET_DB_GetNextSubBc(NIMBET_DB_ITER_INFO *iter, NIMBET_DB_SUB_BC_ENTRY *entry) {
    return nimbet::walk_next_image<SubBc::rowLen>(kWalk, iter, entry, SubBc::get);
}

NIMBET_DB_API uint32_t NIMBET_DB_ReadSubBc(NIMBET_DB_SUB_BC_ENTRY *entry) { return Table::read(entry); }
NIMBET_DB_API uint32_t NIMBET_DB_WriteSubBc(const NIMBET_DB_SUB_BC_ENTRY *entry) { return Table::write(entry); }
NIMBET_DB_API uint32_t NIMBET_DB_DeleteSubBc(const NIMBET_DB_SUB_BC_ENTRY *entry) { return Table::remove(entry); }

NIMBET_DB_API void NIMBET_SetSubBcCfgItemLite(const NIMBET_DB_SUB_BC_ENTRY *entry, uint8_t *rowImage) {
    Table::fill(entry, rowImage);
}
NIMBET_DB_API void NIMBET_DB_GetSubBcInfo(const uint8_t *rowImage, NIMBET_DB_SUB_BC_ENTRY *entry) {
    Table::get(rowImage, entry);
}

}  // extern "C"
