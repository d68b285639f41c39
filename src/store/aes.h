#pragma once
// AES-128 block cipher (FIPS 197), used only to seal catalogue files. ECB
// over whole 16-byte blocks: the seal has no chaining and no IV, and its bytes
// must stay exactly as earlier versions wrote them.

#include <cstddef>
#include <cstdint>

namespace marrowfin {

class AES {
public:
    // Runs the key expansion over the 16 key bytes.
    explicit AES(const uint8_t key[16]);
    virtual ~AES() = default;

    // One block in place.
    void Cipher(uint8_t block[16]) const;
    void InvCipher(uint8_t block[16]) const;
    // Every whole 16-byte block of the buffer; a tail shorter than a block is left alone.
    void Encrypt(uint8_t* buffer, size_t length) const;
    void Decrypt(uint8_t* buffer, size_t length) const;

private:
    void KeyExpansion(const uint8_t key[16]);
    void AddRoundKey(uint8_t state[4][4], int round) const;

    uint8_t m_sbox[256];
    uint8_t m_invSbox[256];
    // Eleven round keys, four rows each, as the state is laid out.
    uint8_t m_roundKeys[11][4][4];
};

}  // namespace marrowfin
