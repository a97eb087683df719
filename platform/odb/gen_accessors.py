#!/usr/bin/env python3
"""Generate the object database's per-table accessors from schema.odb.

usage: gen_accessors.py SCHEMA OUT_HEADER OUT_SOURCE

OUT_HEADER (db_nimbet_tables.h) declares every accessor; OUT_SOURCE
(tables.cpp) holds the table descriptors and the accessor definitions, each a
thin call into the store. Nothing here is written by hand per table.
"""
import re
import sys

TYPES = {
    # schema type: (C type of the setter value, C type of the getter out, FieldType, size)
    "u8": ("uint8_t", "uint8_t", "U8", 1),
    "u8w": ("uint32_t", "uint8_t", "U8W", 1),
    "u16": ("uint16_t", "uint16_t", "U16", 2),
    "u32": ("uint32_t", "uint32_t", "U32", 4),
    "u64": ("uint64_t", "uint64_t", "U64", 8),
    "i64": ("int64_t", "int64_t", "I64", 8),
}
IDENT = re.compile(r"^[A-Za-z_][A-Za-z0-9_]*$")


def fail(lineno, msg):
    sys.exit(f"schema.odb:{lineno}: {msg}")


def type_info(lineno, t):
    if t in TYPES:
        return TYPES[t]
    m = re.fullmatch(r"bytes(\d+)", t)
    if m and 0 < int(m.group(1)) <= 64:
        return (None, None, "Bytes", int(m.group(1)))
    fail(lineno, f"unknown type {t}")


def parse(path):
    tables, cur, lst = [], None, None
    with open(path) as f:
        for lineno, raw in enumerate(f, 1):
            line = raw.split("#", 1)[0].strip()
            if not line:
                continue
            w = line.split()
            if w[0] == "table":
                if len(w) == 4 and w[2] == "image":
                    cur = {"name": w[1], "image": True, "rowLen": int(w[3])}
                elif len(w) == 3 and w[2] == "fields":
                    cur = {"name": w[1], "image": False, "rowLen": 0}
                else:
                    fail(lineno, "bad table line")
                if not IDENT.match(w[1]):
                    fail(lineno, "bad table name")
                cur.update(fields=[], primary=None, indexes=[], list=None, lineno=lineno)
                tables.append(cur)
                lst = None
            elif cur is None:
                fail(lineno, "line outside a table")
            elif w[0] == "field":
                if lst is not None:
                    fail(lineno, "field after list")
                name, t = w[1], w[2]
                if not IDENT.match(name):
                    fail(lineno, "bad field name")
                info = type_info(lineno, t)
                if cur["image"]:
                    if len(w) != 4 or not w[3].startswith("@"):
                        fail(lineno, "image field needs @offset")
                    off = int(w[3][1:])
                else:
                    if len(w) != 3:
                        fail(lineno, "field tables take no offset")
                    off = cur["rowLen"]
                    cur["rowLen"] += info[3]
                if off + info[3] > cur["rowLen"]:
                    fail(lineno, "field beyond the row")
                if any(f["name"] == name for f in cur["fields"]):
                    fail(lineno, "duplicate field")
                cur["fields"].append({"name": name, "type": t, "info": info, "offset": off})
            elif w[0] in ("key", "index"):
                number = 0
                comps_w = w[1:]
                if w[0] == "index":
                    number = int(w[1])
                    comps_w = w[2:]
                    if not 1 <= number <= 5:
                        fail(lineno, "index number must be 1..5")
                comps = []
                for c in comps_w:
                    if c.startswith("@"):
                        off, ln = c[1:].split(":")
                        comps.append((int(off), int(ln), 0))
                    elif c.startswith("="):
                        comps.append((-1, 1, int(c[1:], 0)))
                    else:
                        fld = next((f for f in cur["fields"] if f["name"] == c), None)
                        if fld is None:
                            fail(lineno, f"unknown key field {c}")
                        comps.append((fld["offset"], fld["info"][3], 0))
                if not comps or len(comps) > 6:
                    fail(lineno, "a key has 1 to 6 components")
                for off, ln, _ in comps:
                    if off >= 0 and off + ln > cur["rowLen"]:
                        fail(lineno, "key component beyond the row")
                key = {"number": number, "comps": comps, "length": sum(c[1] for c in comps)}
                if key["length"] > 64:
                    fail(lineno, "key longer than 64 bytes")
                if number == 0:
                    cur["primary"] = key
                else:
                    if any(k["number"] == number for k in cur["indexes"]):
                        fail(lineno, "duplicate index number")
                    cur["indexes"].append(key)
                    if len(cur["indexes"]) > 3:
                        fail(lineno, "at most 3 secondary indexes")
            elif w[0] == "list":
                lst = {"name": w[1], "items": [], "size": 0}
                cur["list"] = lst
            elif w[0] == "item":
                if lst is None:
                    fail(lineno, "item outside a list")
                info = type_info(lineno, w[2])
                lst["items"].append({"name": w[1], "type": w[2], "info": info, "offset": lst["size"]})
                lst["size"] += info[3]
            else:
                fail(lineno, f"unknown keyword {w[0]}")
    for t in tables:
        if t["primary"] is None:
            fail(t["lineno"], f"table {t['name']} has no key")
    return tables


def accessor_decls(t):
    """(kind, name, params, call) of every accessor of one table."""
    n = t["name"]
    out = [
        ("create", f"db_create_{n}_obj", "uint32_t mode, uint32_t reserved, DB_HANDLE *obj"),
        ("release", f"db_release_{n}_object", "DB_HANDLE obj"),
    ]
    if t["image"]:
        out.append(("setall", f"db_set_{n}_all_fields", "DB_HANDLE obj, const void *rowImage, uint32_t len"))
    for i, f in enumerate(t["fields"]):
        out += field_decls(f"db_set_{n}_{f['name']}", f"db_get_{n}_{f['name']}", "obj", f, i, False)
    if t["list"]:
        for i, f in enumerate(t["list"]["items"]):
            base = f"{n}_{t['list']['name']}_{f['name']}"
            out += field_decls(f"db_set_{base}", f"db_get_{base}", "child", f, i, True)
    return out


def field_decls(setter, getter, h, f, idx, item):
    setv, getv, _, size = f["info"]
    if setv is None:
        return [
            ("setbytes", setter, f"DB_HANDLE {h}, const uint8_t *value, uint32_t len", idx, item),
            ("getbytes", getter, f"DB_HANDLE {h}, uint8_t **value, uint32_t *len", idx, item),
        ]
    return [
        ("set", setter, f"DB_HANDLE {h}, {setv} value", idx, item),
        ("get", getter, f"DB_HANDLE {h}, {getv} *value", idx, item, getv),
    ]


def gen_header(tables):
    out = [
        "/* Generated by gen_accessors.py from schema.odb. Do not edit. */",
        "#ifndef DB_NIMBET_TABLES_H",
        "#define DB_NIMBET_TABLES_H",
        "",
        "#ifdef __cplusplus",
        'extern "C" {',
        "#endif",
        "",
    ]
    for t in tables:
        out.append(f"/* {t['name']} */")
        for d in accessor_decls(t):
            out.append(f"DB_NIMBET_API uint32_t {d[1]}({d[2]});")
        out.append("")
    out += ["#ifdef __cplusplus", "}", "#endif", "", "#endif /* DB_NIMBET_TABLES_H */", ""]
    return "\n".join(out)


def c_key(k):
    comps = ", ".join(f"{{{o}, {ln}, {c}}}" for o, ln, c in k["comps"])
    return f"{{{k['number']}, {len(k['comps'])}, {k['length']}, {{{comps}}}}}"


def c_fields(fields, prefix=""):
    return ", ".join(
        f'{{"{prefix}{f["name"]}", FieldType::{f["info"][2]}, {f["offset"]}, {f["info"][3]}}}' for f in fields
    )


def gen_source(tables):
    out = [
        "// Generated by gen_accessors.py from schema.odb. Do not edit.",
        '#include "db_nimbet.h"',
        '#include "schema.h"',
        '#include "store.h"',
        "",
        "namespace odb {",
        "namespace {",
    ]
    for t in tables:
        n = t["name"]
        out.append(f"const FieldDesc k_{n}_fields[] = {{{c_fields(t['fields'])}}};")
        if t["list"]:
            ln = t["list"]["name"]
            out.append(f"const FieldDesc k_{n}_items[] = {{{c_fields(t['list']['items'], ln + '_')}}};")
            out.append(
                f'const ListDesc k_{n}_list = {{"{ln}", {t["list"]["size"]}, {len(t["list"]["items"])}, k_{n}_items}};'
            )
    out.append("}  // namespace")
    out.append("")
    out.append("const TableDesc kTables[] = {")
    for t in tables:
        n = t["name"]
        idx = ", ".join(c_key(k) for k in t["indexes"]) or "{}"
        lst = f"&k_{n}_list" if t["list"] else "nullptr"
        out.append(
            f'    {{"{n}", {"true" if t["image"] else "false"}, {t["rowLen"]}, {len(t["fields"])}, k_{n}_fields, '
            f"{c_key(t['primary'])}, {len(t['indexes'])}, {{{idx}}}, {lst}}},"
        )
    out.append("};")
    out.append(f"const unsigned kTableCount = {len(tables)};")
    out.append("}  // namespace odb")
    out.append("")
    out.append('extern "C" {')
    for ti, t in enumerate(tables):
        for d in accessor_decls(t):
            kind, name, params = d[0], d[1], d[2]
            head = f"DB_NIMBET_API uint32_t {name}({params})"
            if kind == "create":
                body = f"return odb::api_create({ti}, mode, reserved, obj);"
            elif kind == "release":
                body = f"return odb::api_release({ti}, obj);"
            elif kind == "setall":
                body = f"return odb::api_set_all({ti}, obj, rowImage, len);"
            else:
                idx, item = d[3], d[4]
                h = "child" if item else "obj"
                it = "true" if item else "false"
                if kind == "set":
                    body = f"return odb::api_set_field({ti}, {idx}, {it}, {h}, static_cast<uint64_t>(value));"
                elif kind == "get":
                    body = (
                        f"uint64_t v = 0; const uint32_t s = odb::api_get_field({ti}, {idx}, {it}, {h}, value != nullptr, &v); "
                        f"if (s == 0) *value = static_cast<{d[5]}>(v); return s;"
                    )
                elif kind == "setbytes":
                    body = f"return odb::api_set_bytes({ti}, {idx}, {it}, {h}, value, len);"
                else:
                    body = f"return odb::api_get_bytes({ti}, {idx}, {it}, {h}, value, len);"
            out.append(f"{head} {{ {body} }}")
    out.append("}")
    out.append("")
    return "\n".join(out)


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    tables = parse(sys.argv[1])
    with open(sys.argv[2], "w") as f:
        f.write(gen_header(tables))
    with open(sys.argv[3], "w") as f:
        f.write(gen_source(tables))


if __name__ == "__main__":
    main()
