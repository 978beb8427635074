#pragma once

// Packing of little-endian binary records into byte buffers, whatever the
// byte order of the host.

#include <bit>
#include <cstdint>
#include <cstring>

namespace flightsim::le {

inline std::uint16_t swapIfBig(std::uint16_t v)
{
    if constexpr (std::endian::native == std::endian::big)
        return __builtin_bswap16(v);
    return v;
}
inline std::uint32_t swapIfBig(std::uint32_t v)
{
    if constexpr (std::endian::native == std::endian::big)
        return __builtin_bswap32(v);
    return v;
}
inline std::uint64_t swapIfBig(std::uint64_t v)
{
    if constexpr (std::endian::native == std::endian::big)
        return __builtin_bswap64(v);
    return v;
}

inline void putU16(unsigned char* at, std::uint16_t v)
{
    v = swapIfBig(v);
    std::memcpy(at, &v, 2);
}
inline void putU32(unsigned char* at, std::uint32_t v)
{
    v = swapIfBig(v);
    std::memcpy(at, &v, 4);
}
inline void putI32(unsigned char* at, std::int32_t v) { putU32(at, static_cast<std::uint32_t>(v)); }
inline void putU64(unsigned char* at, std::uint64_t v)
{
    v = swapIfBig(v);
    std::memcpy(at, &v, 8);
}
inline void putF32(unsigned char* at, float v) { putU32(at, std::bit_cast<std::uint32_t>(v)); }
inline void putF64(unsigned char* at, double v) { putU64(at, std::bit_cast<std::uint64_t>(v)); }

} // namespace flightsim::le
