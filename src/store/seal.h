#pragma once
// The seal on a catalogue's root element: the gallery's name and its boutique
// digit, zero-padded, enciphered with AES-128 and written as hex digits.

#include <string>
#include <string_view>

namespace marrowfin {

class AES;

// The fixed key of every seal, used as the 16 key bytes as they stand.
inline constexpr char kSealKey[] = "k3vq9ztmw2xhr7fd";

// Pads with zero bytes to the next multiple of 16 (a whole block of zeros when
// the length already is one), enciphers block by block, writes "%02X" pairs.
std::string EncryptToHex(const AES& aes, std::string_view plainBytes);
// Hex pairs to bytes, deciphered, cut at the first zero byte. Digits may be
// either case. Any other character, or a length that is not a whole number of
// cipher blocks (32 digits), gives an empty result: such a seal matches nothing.
std::string DecryptFromHex(const AES& aes, std::string_view hexText);

// The seal text of a gallery: UTF-8 of name + "1" or "0".
std::string MakeSeal(std::u16string_view galleryName, bool boutique);

}  // namespace marrowfin
