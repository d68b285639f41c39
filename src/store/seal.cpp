#include "store/seal.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "platform/text.h"
#include "store/aes.h"

namespace marrowfin {

namespace {

int HexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

const uint8_t* SealKeyBytes() { return reinterpret_cast<const uint8_t*>(kSealKey); }

}  // namespace

std::string EncryptToHex(const AES& aes, std::string_view plainBytes) {
    const size_t padded = plainBytes.size() + (16 - plainBytes.size() % 16);
    std::vector<uint8_t> buffer(padded, 0);
    std::copy(plainBytes.begin(), plainBytes.end(), buffer.begin());
    aes.Encrypt(buffer.data(), buffer.size());
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string hex;
    hex.reserve(padded * 2);
    for (uint8_t b : buffer) {
        hex.push_back(kDigits[b >> 4]);
        hex.push_back(kDigits[b & 15]);
    }
    return hex;
}

std::string DecryptFromHex(const AES& aes, std::string_view hexText) {
    if (hexText.empty() || hexText.size() % 32 != 0) return {};
    std::vector<uint8_t> buffer(hexText.size() / 2);
    for (size_t i = 0; i < buffer.size(); ++i) {
        const int hi = HexValue(hexText[2 * i]);
        const int lo = HexValue(hexText[2 * i + 1]);
        if (hi < 0 || lo < 0) return {};
        buffer[i] = static_cast<uint8_t>(hi << 4 | lo);
    }
    aes.Decrypt(buffer.data(), buffer.size());
    size_t end = 0;
    while (end < buffer.size() && buffer[end] != 0) ++end;
    return std::string(reinterpret_cast<const char*>(buffer.data()), end);
}

std::string MakeSeal(std::u16string_view galleryName, bool boutique) {
    AES aes(SealKeyBytes());
    std::u16string plain(galleryName);
    plain.push_back(boutique ? u'1' : u'0');
    return EncryptToHex(aes, Utf16ToUtf8(plain));
}

}  // namespace marrowfin
