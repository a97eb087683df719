/* Built as C11: the database headers must stay usable from C hosts. */
#include "db_nimbet.h"
#include "db_nimbet_test.h"

#include <string.h>

/* Writes, reads back and removes one urpf_mode row. Returns 0, or the
 * number of the first step that went wrong. */
int odb_c_smoke(void)
{
    const uint32_t desc = DB_KEY_PRIMARY(9);
    uint8_t image[36], back[36];
    uint64_t count = 0;
    uint32_t flags = 0;
    DB_HANDLE w = 0, r = 0;
    int step = 0;

    memset(image, 0, sizeof image);
    image[0] = 0x11;
    image[8] = 0x22;
    image[20] = 0x5a; /* flags */
    if (db_create_urpf_mode_obj(DB_OPEN_WRITE, 0, &w) != 0) {
        return 1;
    }
    if (db_set_urpf_mode_all_fields(w, image, sizeof image) != 0 || db_write_obj(w) != 0) {
        step = 2;
    } else if (db_test_row_count("urpf_mode") != 1) {
        step = 3;
    } else if (db_create_urpf_mode_obj(DB_OPEN_READ, 0, &r) != 0) {
        step = 4;
    } else if (db_read_obj_with_buf(r, &desc, image, back, sizeof back) != 0 || memcmp(back, image, 36) != 0) {
        step = 5;
    } else if (db_get_urpf_mode_flags(r, &flags) != 0 || flags != 0x5a) {
        step = 6;
    }
    if (r != 0 && db_release_urpf_mode_object(r) != 0 && step == 0) {
        step = 7;
    }
    if (db_release_urpf_mode_object(w) != 0 && step == 0) {
        step = 8;
    }
    if (step == 0 && db_create_urpf_mode_obj(DB_OPEN_REMOVE, 0, &r) == 0) {
        if (db_remove_obj(r, &desc, image) != 0 || db_remove_obj(r, &desc, image) != DB_RET_TOLERATED) {
            step = 9;
        }
        db_release_urpf_mode_object(r);
        r = 0;
        if (step == 0 && (db_create_urpf_mode_obj(DB_OPEN_COUNT, 0, &r) != 0 ||
                          db_get_table_record_count(r, &count) != 0 || count != 0)) {
            step = 10;
        }
        if (r != 0) {
            db_release_urpf_mode_object(r);
        }
    }
    return step != 0 ? step : (db_test_live_objects() == 0 ? 0 : 11);
}
