// Entry points of the store behind the generated per-table accessors.
#pragma once

#include <cstdint>

#include "db_nimbet.h"

namespace odb {

uint32_t api_create(unsigned table, uint32_t mode, uint32_t reserved, DB_HANDLE *obj);
uint32_t api_release(unsigned table, DB_HANDLE obj);
uint32_t api_set_all(unsigned table, DB_HANDLE obj, const void *image, uint32_t len);
uint32_t api_set_field(unsigned table, unsigned field, bool item, DB_HANDLE h, uint64_t value);
uint32_t api_get_field(unsigned table, unsigned field, bool item, DB_HANDLE h, bool outOk, uint64_t *value);
uint32_t api_set_bytes(unsigned table, unsigned field, bool item, DB_HANDLE h, const uint8_t *value,
                       uint32_t len);
uint32_t api_get_bytes(unsigned table, unsigned field, bool item, DB_HANDLE h, uint8_t **value, uint32_t *len);

}  // namespace odb
