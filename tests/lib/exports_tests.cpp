// The library's dynamic symbol table: only its own names are exported, and
// the platform is reached through undefined symbols.
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>

#include "support.h"

extern "C" int c_api_roundtrip(void);

namespace nimbet_test {
namespace {

std::set<std::string> nm(const std::string &args) {
    std::set<std::string> out;
    const std::string cmd = "nm -D " + args + " " NIMBET_DB_LIBRARY;
    FILE *p = popen(cmd.c_str(), "r");
    if (p == nullptr) return out;
    char line[512];
    while (fgets(line, sizeof line, p) != nullptr) {
        std::istringstream ss(line);
        std::string a, b, c;
        ss >> a >> b >> c;
        const std::string &name = c.empty() ? b : c;  // undefined symbols have no address
        if (!name.empty()) out.insert(name.substr(0, name.find('@')));
    }
    pclose(p);
    return out;
}

std::set<std::string> required() {
    std::set<std::string> names;
    std::ifstream map(NIMBET_DB_MAP);
    std::string line;
    while (std::getline(map, line)) {
        const auto semi = line.find(';');
        const auto start = line.find_first_not_of(' ');
        if (semi == std::string::npos || line.find(':') != std::string::npos || line[start] == '}') continue;
        names.insert(line.substr(start, semi - start));
    }
    return names;
}

TEST(Exports, EveryExportedNameIsARequiredOne) {
    const std::set<std::string> req = required();
    ASSERT_EQ(200u, req.size());
    const std::set<std::string> exported = nm("--defined-only");
    ASSERT_FALSE(exported.empty());
    for (const std::string &n : exported) EXPECT_TRUE(req.count(n)) << "unexpected export " << n;
    for (const char *n : {"NIMBET_DB_ContextInit", "NIMBET_DB_RecordErrStat", "NIMBET_DB_WriteIpv4Entry",
                          "g_nimbetDbErrStat", "g_nimbetSessionCnt", "g_nimbetDbContext"})
        EXPECT_TRUE(exported.count(n)) << n;
}

TEST(Exports, ThePlatformStaysUndefined) {
    const std::set<std::string> undef = nm("--undefined-only");
    for (const char *n : {"db_write_obj", "db_create_ifm_ipv4_address_obj", "db_read_obj"})
        EXPECT_TRUE(undef.count(n)) << n << " must be bound at load time";
}

class CHost : public LibTest {};

TEST_F(CHost, ACTranslationUnitCallsTheLibrary) { EXPECT_EQ(0, c_api_roundtrip()); }

}  // namespace
}  // namespace nimbet_test
