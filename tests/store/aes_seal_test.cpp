#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "platform/text.h"
#include "store/aes.h"
#include "store/seal.h"

namespace marrowfin {
namespace {

std::string FromHex(const std::string& hex) {
    std::string out;
    for (size_t i = 0; i + 1 < hex.size(); i += 2) out.push_back(static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return out;
}

std::string ToHex(const std::string& bytes) {
    std::string s;
    for (unsigned char b : bytes) s += "0123456789abcdef"[b >> 4], s += "0123456789abcdef"[b & 15];
    return s;
}

const AES& SealAes() {
    static const AES aes(reinterpret_cast<const uint8_t*>(kSealKey));
    return aes;
}

// FIPS-197 Appendix B and C.1: each block twice (no chaining) plus a tail of 3 bytes left alone.
TEST(Aes, Fips197Vectors) {
    const char* vectors[][3] = {
        {"2b7e151628aed2a6abf7158809cf4f3c", "3243f6a8885a308d313198a2e0370734", "3925841d02dc09fbdc118597196a0b32"},
        {"000102030405060708090a0b0c0d0e0f", "00112233445566778899aabbccddeeff", "69c4e0d86a7b0430d8cdb78070b4c55a"},
    };
    for (const auto& [key, plain, cipher] : vectors) {
        const std::string k = FromHex(key);
        AES aes(reinterpret_cast<const uint8_t*>(k.data()));
        std::string buf = FromHex(plain) + FromHex(plain) + "xyz";
        aes.Encrypt(reinterpret_cast<uint8_t*>(buf.data()), buf.size());
        EXPECT_EQ(ToHex(buf), std::string(cipher) + cipher + "78797a") << key;
        aes.Decrypt(reinterpret_cast<uint8_t*>(buf.data()), buf.size());
        EXPECT_EQ(buf, FromHex(plain) + FromHex(plain) + "xyz") << key;
    }
}

// Seals in lower case and with a changed digit are read through the catalogue.
// Expected seals come from `openssl enc -aes-128-ecb -nopad` over the zero-padded UTF-8 text.
TEST(Seal, MatchesAnIndependentCipherAndRefusesWhatCannotBeWhole) {
    const std::tuple<const char16_t*, bool, const char*> seals[] = {
        {u"Stone", false, "3AD963E223DEDBD893A072649520BE84"},
        // 15 bytes plus the digit fill a block: a whole block of zeros follows.
        {u"Mechanical part", false, "7655C1F481D2402E0EF17058B3D99D9210B884726900464076F44922B2DEA869"},
        {u"建筑图库", true, "C7EBF82711079B79A95B3AACB8D89A4C"},
        {u"我的收藏", false, "3DDA0214D019B8D427BB01512BF214D0"},
    };
    for (const auto& [name, boutique, hex] : seals) {
        EXPECT_EQ(MakeSeal(name, boutique), hex);
        EXPECT_EQ(DecryptFromHex(SealAes(), hex), Utf16ToUtf8(name) + (boutique ? "1" : "0"));
    }
    const std::string seal = MakeSeal(u"建筑图库", true);
    for (const std::string& broken : {std::string(), seal.substr(0, 31), seal.substr(0, 30), seal.substr(0, 17) + "G" + seal.substr(18),
                                      seal.substr(0, 17) + " " + seal.substr(18), MakeSeal(u"Mechanical part", false).substr(0, 48)})
        EXPECT_EQ(DecryptFromHex(SealAes(), broken), "") << broken;
    EXPECT_EQ(DecryptFromHex(SealAes(), EncryptToHex(SealAes(), "")), "");  // one block of padding alone
}

}  // namespace
}  // namespace marrowfin
