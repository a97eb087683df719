#include "addrtext.h"

#include <cstdio>

namespace nimbet {

Ipv6Text::Ipv6Text(const uint8_t (&addr)[16]) {
    uint16_t w[8];
    for (int i = 0; i < 8; ++i) w[i] = static_cast<uint16_t>(addr[2 * i] << 8 | addr[2 * i + 1]);
    // The longest run of at least two zero groups, the first of equal ones,
    // becomes "::".
    int best = -1, bestLen = 0;
    for (int i = 0; i < 8;) {
        if (w[i] != 0) {
            ++i;
            continue;
        }
        int j = i;
        while (j < 8 && w[j] == 0) ++j;
        if (j - i > bestLen && j - i >= 2) {
            best = i;
            bestLen = j - i;
        }
        i = j;
    }
    char *p = text_;
    const char *end = text_ + sizeof text_;
    for (int i = 0; i < 8; ++i) {
        if (i == best) {
            *p++ = ':';
            if (i + bestLen == 8) *p++ = ':';
            i += bestLen - 1;
            continue;
        }
        if (i != 0) *p++ = ':';
        // IPv4-compatible (::a.b.c.d) and IPv4-mapped (::ffff:a.b.c.d)
        // addresses end in dotted decimal.
        if (i == 6 && best == 0 && (bestLen == 6 || (bestLen == 5 && w[5] == 0xFFFF))) {
            p += std::snprintf(p, static_cast<size_t>(end - p), "%u.%u.%u.%u", addr[12], addr[13], addr[14], addr[15]);
            break;
        }
        p += std::snprintf(p, static_cast<size_t>(end - p), "%x", w[i]);
    }
    *p = '\0';
}

MacText::MacText(const uint8_t (&mac)[6]) {
    std::snprintf(text_, sizeof text_, "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2], mac[3], mac[4],
                  mac[5]);
}

}  // namespace nimbet
