#include "store/aes.h"

#include <cstring>

namespace marrowfin {

namespace {

// The table reads sixteen to a row, as it is published.
// clang-format off
constexpr uint8_t kSbox[256] = {
    0x63, 0x7c, 0x77, 0x7b, 0xf2, 0x6b, 0x6f, 0xc5, 0x30, 0x01, 0x67, 0x2b, 0xfe, 0xd7, 0xab, 0x76,
    0xca, 0x82, 0xc9, 0x7d, 0xfa, 0x59, 0x47, 0xf0, 0xad, 0xd4, 0xa2, 0xaf, 0x9c, 0xa4, 0x72, 0xc0,
    0xb7, 0xfd, 0x93, 0x26, 0x36, 0x3f, 0xf7, 0xcc, 0x34, 0xa5, 0xe5, 0xf1, 0x71, 0xd8, 0x31, 0x15,
    0x04, 0xc7, 0x23, 0xc3, 0x18, 0x96, 0x05, 0x9a, 0x07, 0x12, 0x80, 0xe2, 0xeb, 0x27, 0xb2, 0x75,
    0x09, 0x83, 0x2c, 0x1a, 0x1b, 0x6e, 0x5a, 0xa0, 0x52, 0x3b, 0xd6, 0xb3, 0x29, 0xe3, 0x2f, 0x84,
    0x53, 0xd1, 0x00, 0xed, 0x20, 0xfc, 0xb1, 0x5b, 0x6a, 0xcb, 0xbe, 0x39, 0x4a, 0x4c, 0x58, 0xcf,
    0xd0, 0xef, 0xaa, 0xfb, 0x43, 0x4d, 0x33, 0x85, 0x45, 0xf9, 0x02, 0x7f, 0x50, 0x3c, 0x9f, 0xa8,
    0x51, 0xa3, 0x40, 0x8f, 0x92, 0x9d, 0x38, 0xf5, 0xbc, 0xb6, 0xda, 0x21, 0x10, 0xff, 0xf3, 0xd2,
    0xcd, 0x0c, 0x13, 0xec, 0x5f, 0x97, 0x44, 0x17, 0xc4, 0xa7, 0x7e, 0x3d, 0x64, 0x5d, 0x19, 0x73,
    0x60, 0x81, 0x4f, 0xdc, 0x22, 0x2a, 0x90, 0x88, 0x46, 0xee, 0xb8, 0x14, 0xde, 0x5e, 0x0b, 0xdb,
    0xe0, 0x32, 0x3a, 0x0a, 0x49, 0x06, 0x24, 0x5c, 0xc2, 0xd3, 0xac, 0x62, 0x91, 0x95, 0xe4, 0x79,
    0xe7, 0xc8, 0x37, 0x6d, 0x8d, 0xd5, 0x4e, 0xa9, 0x6c, 0x56, 0xf4, 0xea, 0x65, 0x7a, 0xae, 0x08,
    0xba, 0x78, 0x25, 0x2e, 0x1c, 0xa6, 0xb4, 0xc6, 0xe8, 0xdd, 0x74, 0x1f, 0x4b, 0xbd, 0x8b, 0x8a,
    0x70, 0x3e, 0xb5, 0x66, 0x48, 0x03, 0xf6, 0x0e, 0x61, 0x35, 0x57, 0xb9, 0x86, 0xc1, 0x1d, 0x9e,
    0xe1, 0xf8, 0x98, 0x11, 0x69, 0xd9, 0x8e, 0x94, 0x9b, 0x1e, 0x87, 0xe9, 0xce, 0x55, 0x28, 0xdf,
    0x8c, 0xa1, 0x89, 0x0d, 0xbf, 0xe6, 0x42, 0x68, 0x41, 0x99, 0x2d, 0x0f, 0xb0, 0x54, 0xbb, 0x16,
};
// clang-format on

constexpr uint8_t kRcon[10] = {0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80, 0x1b, 0x36};

inline uint8_t XTime(uint8_t x) { return static_cast<uint8_t>((x << 1) ^ ((x & 0x80) ? 0x1b : 0x00)); }

// Multiplication in GF(2^8), for the inverse mix.
inline uint8_t Mul(uint8_t a, uint8_t b) {
    uint8_t r = 0;
    while (b) {
        if (b & 1) r ^= a;
        a = XTime(a);
        b >>= 1;
    }
    return r;
}

// The state is filled column by column: state[row][col] = in[row + 4 * col].
void Load(uint8_t state[4][4], const uint8_t* in) {
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 4; ++r) state[r][c] = in[r + 4 * c];
}

void Store(const uint8_t state[4][4], uint8_t* out) {
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 4; ++r) out[r + 4 * c] = state[r][c];
}

void ShiftRows(uint8_t s[4][4]) {
    for (int r = 1; r < 4; ++r) {
        uint8_t row[4];
        for (int c = 0; c < 4; ++c) row[c] = s[r][(c + r) & 3];
        std::memcpy(s[r], row, 4);
    }
}

void InvShiftRows(uint8_t s[4][4]) {
    for (int r = 1; r < 4; ++r) {
        uint8_t row[4];
        for (int c = 0; c < 4; ++c) row[(c + r) & 3] = s[r][c];
        std::memcpy(s[r], row, 4);
    }
}

void MixColumns(uint8_t s[4][4]) {
    for (int c = 0; c < 4; ++c) {
        const uint8_t a0 = s[0][c], a1 = s[1][c], a2 = s[2][c], a3 = s[3][c];
        const uint8_t all = a0 ^ a1 ^ a2 ^ a3;
        s[0][c] = static_cast<uint8_t>(a0 ^ all ^ XTime(a0 ^ a1));
        s[1][c] = static_cast<uint8_t>(a1 ^ all ^ XTime(a1 ^ a2));
        s[2][c] = static_cast<uint8_t>(a2 ^ all ^ XTime(a2 ^ a3));
        s[3][c] = static_cast<uint8_t>(a3 ^ all ^ XTime(a3 ^ a0));
    }
}

void InvMixColumns(uint8_t s[4][4]) {
    for (int c = 0; c < 4; ++c) {
        const uint8_t a0 = s[0][c], a1 = s[1][c], a2 = s[2][c], a3 = s[3][c];
        s[0][c] = Mul(a0, 14) ^ Mul(a1, 11) ^ Mul(a2, 13) ^ Mul(a3, 9);
        s[1][c] = Mul(a0, 9) ^ Mul(a1, 14) ^ Mul(a2, 11) ^ Mul(a3, 13);
        s[2][c] = Mul(a0, 13) ^ Mul(a1, 9) ^ Mul(a2, 14) ^ Mul(a3, 11);
        s[3][c] = Mul(a0, 11) ^ Mul(a1, 13) ^ Mul(a2, 9) ^ Mul(a3, 14);
    }
}

}  // namespace

AES::AES(const uint8_t key[16]) {
    std::memcpy(m_sbox, kSbox, sizeof m_sbox);
    for (int i = 0; i < 256; ++i) m_invSbox[m_sbox[i]] = static_cast<uint8_t>(i);
    KeyExpansion(key);
}

void AES::KeyExpansion(const uint8_t key[16]) {
    // Words w[0..43]; word i is column (i % 4) of round key i / 4.
    uint8_t w[44][4];
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) w[i][j] = key[4 * i + j];
    for (int i = 4; i < 44; ++i) {
        uint8_t t[4] = {w[i - 1][0], w[i - 1][1], w[i - 1][2], w[i - 1][3]};
        if (i % 4 == 0) {
            const uint8_t first = t[0];
            t[0] = static_cast<uint8_t>(m_sbox[t[1]] ^ kRcon[i / 4 - 1]);
            t[1] = m_sbox[t[2]];
            t[2] = m_sbox[t[3]];
            t[3] = m_sbox[first];
        }
        for (int j = 0; j < 4; ++j) w[i][j] = static_cast<uint8_t>(w[i - 4][j] ^ t[j]);
    }
    for (int round = 0; round < 11; ++round)
        for (int c = 0; c < 4; ++c)
            for (int r = 0; r < 4; ++r) m_roundKeys[round][r][c] = w[4 * round + c][r];
}

void AES::AddRoundKey(uint8_t state[4][4], int round) const {
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) state[r][c] ^= m_roundKeys[round][r][c];
}

void AES::Cipher(uint8_t block[16]) const {
    uint8_t s[4][4];
    Load(s, block);
    AddRoundKey(s, 0);
    for (int round = 1; round <= 10; ++round) {
        for (auto& row : s)
            for (auto& b : row) b = m_sbox[b];
        ShiftRows(s);
        if (round != 10) MixColumns(s);
        AddRoundKey(s, round);
    }
    Store(s, block);
}

void AES::InvCipher(uint8_t block[16]) const {
    uint8_t s[4][4];
    Load(s, block);
    AddRoundKey(s, 10);
    for (int round = 9; round >= 0; --round) {
        InvShiftRows(s);
        for (auto& row : s)
            for (auto& b : row) b = m_invSbox[b];
        AddRoundKey(s, round);
        if (round != 0) InvMixColumns(s);
    }
    Store(s, block);
}

void AES::Encrypt(uint8_t* buffer, size_t length) const {
    for (size_t i = 0; i + 16 <= length; i += 16) Cipher(buffer + i);
}

void AES::Decrypt(uint8_t* buffer, size_t length) const {
    for (size_t i = 0; i + 16 <= length; i += 16) InvCipher(buffer + i);
}

}  // namespace marrowfin
