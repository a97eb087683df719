// Text forms of the byte-array addresses that messages show at "%s":
// IPv6 in RFC 5952 form (as inet_ntop writes it) and MAC as
// xx:xx:xx:xx:xx:xx. Each reads exactly its array and formats into a buffer
// of its own, so a message needs no heap and no terminator in the record.
#pragma once

#include <cstdint>

namespace nimbet {

class Ipv6Text {
public:
    explicit Ipv6Text(const uint8_t (&addr)[16]);
    const char *c_str() const { return text_; }

private:
    char text_[46];  // INET6_ADDRSTRLEN
};

class MacText {
public:
    explicit MacText(const uint8_t (&mac)[6]);
    const char *c_str() const { return text_; }

private:
    char text_[18];
};

}  // namespace nimbet
