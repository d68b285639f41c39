#include <gtest/gtest.h>

#include <string>

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

std::string ToHex(const uint8_t* bytes, size_t n) {
    static const char* d = "0123456789abcdef";
    std::string s;
    for (size_t i = 0; i < n; ++i) {
        s.push_back(d[bytes[i] >> 4]);
        s.push_back(d[bytes[i] & 15]);
    }
    return s;
}

const AES& SealAes() {
    static const AES aes(reinterpret_cast<const uint8_t*>(kSealKey));
    return aes;
}

TEST(Aes, Fips197Vectors) {
    struct Vector {
        const char* key;
        const char* plain;
        const char* cipher;
    };
    // Appendix B (the worked example) and Appendix C.1 (AES-128).
    const Vector vectors[] = {
        {"2b7e151628aed2a6abf7158809cf4f3c", "3243f6a8885a308d313198a2e0370734", "3925841d02dc09fbdc118597196a0b32"},
        {"000102030405060708090a0b0c0d0e0f", "00112233445566778899aabbccddeeff", "69c4e0d86a7b0430d8cdb78070b4c55a"},
    };
    for (const auto& v : vectors) {
        const std::string key = FromHex(v.key);
        AES aes(reinterpret_cast<const uint8_t*>(key.data()));
        std::string block = FromHex(v.plain);
        auto* bytes = reinterpret_cast<uint8_t*>(block.data());
        aes.Cipher(bytes);
        EXPECT_EQ(ToHex(bytes, 16), v.cipher) << v.key;
        aes.InvCipher(bytes);
        EXPECT_EQ(ToHex(bytes, 16), v.plain) << v.key;
    }
}

TEST(Aes, EncryptWorksBlockByBlockAndLeavesATailAlone) {
    const std::string key = FromHex("000102030405060708090a0b0c0d0e0f");
    AES aes(reinterpret_cast<const uint8_t*>(key.data()));
    // Two equal blocks give equal cipher blocks (no chaining); 3 tail bytes stay.
    std::string buf = FromHex("00112233445566778899aabbccddeeff00112233445566778899aabbccddeeff") + "xyz";
    auto* bytes = reinterpret_cast<uint8_t*>(buf.data());
    aes.Encrypt(bytes, buf.size());
    EXPECT_EQ(ToHex(bytes, 16), "69c4e0d86a7b0430d8cdb78070b4c55a");
    EXPECT_EQ(ToHex(bytes + 16, 16), "69c4e0d86a7b0430d8cdb78070b4c55a");
    EXPECT_EQ(buf.substr(32), "xyz");
    aes.Decrypt(bytes, buf.size());
    EXPECT_EQ(ToHex(bytes, 32), "00112233445566778899aabbccddeeff00112233445566778899aabbccddeeff");
}

// Expected seals were computed outside this code base with
// `openssl enc -aes-128-ecb -nopad` over the zero-padded plain text.
TEST(Seal, MatchesAnIndependentCipherAtTheLengthsThatMatter) {
    // 5 UTF-8 bytes plus the digit: one block, 32 digits.
    EXPECT_EQ(MakeSeal(u"Stone", false), "3AD963E223DEDBD893A072649520BE84");
    // 15 bytes plus the digit fill a block exactly: a whole block of zeros follows.
    const std::string full = MakeSeal(u"Mechanical part", false);
    EXPECT_EQ(full.size(), 64u);
    EXPECT_EQ(full, "7655C1F481D2402E0EF17058B3D99D9210B884726900464076F44922B2DEA869");
    // Chinese names are enciphered as UTF-8 (12 bytes here), not UTF-16.
    EXPECT_EQ(MakeSeal(u"建筑图库", true), "C7EBF82711079B79A95B3AACB8D89A4C");
    EXPECT_EQ(MakeSeal(u"我的收藏", false), "3DDA0214D019B8D427BB01512BF214D0");
}

TEST(Seal, DecodesEitherCaseAndRefusesWhatCannotBeWhole) {
    const std::string upper = MakeSeal(u"建筑图库", true);
    std::string lower = upper;
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    EXPECT_EQ(DecryptFromHex(SealAes(), upper), U8(u"建筑图库1"));
    EXPECT_EQ(DecryptFromHex(SealAes(), lower), U8(u"建筑图库1"));

    const std::string two = MakeSeal(u"Mechanical part", false);
    EXPECT_EQ(DecryptFromHex(SealAes(), two), "Mechanical part0");

    EXPECT_EQ(DecryptFromHex(SealAes(), ""), "");
    EXPECT_EQ(DecryptFromHex(SealAes(), upper.substr(0, 31)), "");  // odd
    EXPECT_EQ(DecryptFromHex(SealAes(), upper.substr(0, 30)), "");  // even, not a whole block
    EXPECT_EQ(DecryptFromHex(SealAes(), two.substr(0, 48)), "");     // one and a half blocks
    std::string bad = upper;
    bad[17] = 'G';
    EXPECT_EQ(DecryptFromHex(SealAes(), bad), "");
    bad[17] = ' ';
    EXPECT_EQ(DecryptFromHex(SealAes(), bad), "");

    // One changed digit scrambles the whole block.
    std::string changed = upper;
    changed[0] = changed[0] == '0' ? '1' : '0';
    EXPECT_NE(DecryptFromHex(SealAes(), changed), U8(u"建筑图库1"));
}

TEST(Seal, PaddingAlwaysAddsAtLeastOneZeroByte) {
    for (size_t n : {0u, 1u, 15u, 16u, 17u, 31u, 32u}) {
        const std::string plain(n, 'a');
        const std::string hex = EncryptToHex(SealAes(), plain);
        EXPECT_EQ(hex.size(), 2 * (n + 16 - n % 16)) << n;
        EXPECT_EQ(hex.find_first_not_of("0123456789ABCDEF"), std::string::npos);
        EXPECT_EQ(DecryptFromHex(SealAes(), hex), plain) << n;
    }
}

}  // namespace
}  // namespace marrowfin
