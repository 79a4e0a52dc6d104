#include "foundation/QAESEncryption.h"

#include <QtGlobal>

#include <algorithm>

// Section numbers are those of FIPS 197.

namespace {

using Box = std::array<quint8, 256>;

constexpr int kWordBytes = 4;
constexpr int kRows = 4;
constexpr int kColumns = 4;
constexpr char kIsoMark = '\x80';

struct Level
{
    int nk;
    int keyLen;
    int nr;
    int expandedKey;
};

/// By the values of `QAESEncryption::Aes`. The 209 is one byte more than the schedule has. The
/// last is 0 and nothing here reads it, but callers know `expandKey`'s result by this size.
constexpr Level kLevels[] = {{4, 16, 10, 176}, {6, 24, 12, 209}, {8, 32, 14, 240}};

const Level &levelOf(int level)
{
    const bool known = level >= QAESEncryption::AES_128 && level <= QAESEncryption::AES_256;
    return kLevels[known ? level : QAESEncryption::AES_128];
}

/// Product in GF(2^8), section 4.2.
constexpr quint8 multiply(unsigned a, unsigned b)
{
    unsigned product = 0;
    for (; b != 0; b >>= 1) {
        if (b & 1)
            product ^= a;
        a = (a << 1) ^ (a & 0x80 ? 0x11B : 0);
    }
    return quint8(product);
}

/// The S-box's step after the inverse, section 5.1.1: the byte and four rotations of it.
constexpr quint8 affine(unsigned byte)
{
    const unsigned twice = byte << 8 | byte;
    return quint8(byte ^ twice >> 7 ^ twice >> 6 ^ twice >> 5 ^ twice >> 4 ^ 0x63);
}

/// Walks all powers of 3, which are all bytes but 0, and beside them those of 0xF6, which is the
/// inverse of 3.
constexpr Box makeSbox()
{
    Box box{};
    quint8 power = 1;
    quint8 inverse = 1;
    for (int i = 0; i < 255; ++i) {
        power = multiply(power, 3);
        inverse = multiply(inverse, 0xF6);
        box[power] = affine(inverse);
    }
    box[0] = affine(0);
    return box;
}

constexpr Box inverseOf(const Box &box)
{
    Box inverse{};
    for (int i = 0; i < 256; ++i)
        inverse[box[std::size_t(i)]] = quint8(i);
    return inverse;
}

/// Powers of 2, section 5.2.
constexpr std::array<quint8, 10> makeRoundConstants()
{
    std::array<quint8, 10> constants{};
    quint8 power = 1;
    for (quint8 &constant : constants) {
        constant = power;
        power = multiply(power, 2);
    }
    return constants;
}

constexpr Box kSbox = makeSbox();
constexpr Box kInverseSbox = inverseOf(kSbox);
constexpr std::array<quint8, 10> kRoundConstants = makeRoundConstants();
static_assert(kSbox[0x53] == 0xED && kInverseSbox[0xED] == 0x53, "the example of section 5.1.1");

/// First rows of the matrices of sections 5.1.3 and 5.3.3.
constexpr std::array<quint8, 4> kMixFactors = {2, 3, 1, 1};
constexpr std::array<quint8, 4> kInverseMixFactors = {14, 11, 13, 9};

/// Runs over the shorter of the two.
QByteArray exclusiveOr(const QByteArray &a, const QByteArray &b)
{
    QByteArray result = a.left(b.size());
    std::transform(result.cbegin(), result.cend(), b.cbegin(), result.begin(),
                   [](char left, char right) { return char(left ^ right); });
    return result;
}

QByteArray withoutZeros(const QByteArray &text)
{
    int size = text.size();
    while (size > 0 && text.at(size - 1) == '\0')
        --size;
    return text.left(size);
}

} // namespace

QAESEncryption::QAESEncryption(Aes level, Mode mode, Padding padding)
    : level(level), mode(mode), nk(levelOf(level).nk), keyLen(levelOf(level).keyLen),
      nr(levelOf(level).nr), expandedKey(levelOf(level).expandedKey), padding(padding), sbox(kSbox),
      inverseSbox(kInverseSbox), rcon(kRoundConstants)
{
}

QByteArray QAESEncryption::Crypt(Aes level, Mode mode, const QByteArray &text,
                                 const QByteArray &key, const QByteArray &vector, Padding padding)
{
    return QAESEncryption(level, mode, padding).encode(text, key, vector);
}

QByteArray QAESEncryption::Decrypt(Aes level, Mode mode, const QByteArray &text,
                                   const QByteArray &key, const QByteArray &vector, Padding padding)
{
    return QAESEncryption(level, mode, padding).decode(text, key, vector);
}

QByteArray QAESEncryption::ExpandKey(Aes level, Mode mode, const QByteArray &key)
{
    return QAESEncryption(level, mode, ISO).expandKey(key);
}

QByteArray QAESEncryption::RemovePadding(const QByteArray &text, Padding padding)
{
    if (text.isEmpty())
        return text;
    const QByteArray bare = withoutZeros(text);
    switch (padding) {
    case ZERO:
        return bare;
    case PKCS7:
        return text.left(qMax(0, text.size() - quint8(text.back())));
    case ISO:
        return bare.endsWith(kIsoMark) ? bare.left(bare.size() - 1) : text;
    }
    return text;
}

QByteArray QAESEncryption::removePadding(const QByteArray &text) const
{
    return RemovePadding(text, Padding(padding));
}

QByteArray QAESEncryption::encode(const QByteArray &text, const QByteArray &key,
                                  const QByteArray &vector)
{
    if (!vectorFits(vector))
        return {};
    const QByteArray keys = expandKey(key);
    // The keys go to the debug log: whoever brings up a device compares them with what it uses.
    // They are no secret, being built into every copy of the program.
    qDebug("%s %s", keys.toHex().constData(), key.toHex().constData());
    const QByteArray padded = text + paddingFor(text.size());
    QByteArray chain = vector;
    QByteArray result;
    for (int at = 0; at < padded.size(); at += blockLength)
        result += encodeBlock(keys, padded.mid(at, blockLength), chain);
    return result;
}

QByteArray QAESEncryption::decode(const QByteArray &text, const QByteArray &key,
                                  const QByteArray &vector)
{
    if (!vectorFits(vector))
        return {};
    const QByteArray keys = expandKey(key);
    QByteArray chain = vector;
    QByteArray result;
    for (int at = 0; at < text.size(); at += blockLength)
        result += decodeBlock(keys, text.mid(at, blockLength), chain);
    return result;
}

QByteArray QAESEncryption::expandKey(const QByteArray &key) const
{
    QByteArray keys = key.leftJustified(keyLen, '\0', true).leftJustified(expandedKey, '\0');
    for (int i = nk; i < nb * (nr + 1); ++i) {
        QByteArray word = keys.mid((i - 1) * kWordBytes, kWordBytes);
        const bool first = i % nk == 0;
        if (first)
            word = word.mid(1) + word.at(0);
        if (first || (nk > 6 && i % nk == 4))
            for (char &byte : word)
                byte = char(sbox[quint8(byte)]);
        if (first)
            word[0] = char(word.at(0) ^ rcon[std::size_t(i / nk - 1)]);
        const QByteArray back = keys.mid((i - nk) * kWordBytes, kWordBytes);
        keys.replace(i * kWordBytes, kWordBytes, exclusiveOr(word, back));
    }
    return keys;
}

bool QAESEncryption::vectorFits(const QByteArray &vector) const
{
    return mode == ECB || vector.size() == blockLength;
}

QByteArray QAESEncryption::paddingFor(int size) const
{
    const int k = (blockLength - size % blockLength) % blockLength;
    const int always = k == 0 ? blockLength : k;
    switch (padding) {
    case PKCS7:
        return QByteArray(always, char(always));
    case ISO:
        return k < 1 ? QByteArray() : kIsoMark + QByteArray(k - 1, '\0');
    default:
        return QByteArray(k, '\0');
    }
}

/// One block of cipher text; `chain` goes on to what the next block needs.
QByteArray QAESEncryption::encodeBlock(const QByteArray &keys, const QByteArray &block,
                                       QByteArray &chain)
{
    switch (mode) {
    case CBC:
        return chain = cipher(keys, exclusiveOr(block, chain));
    case CFB:
        return chain = exclusiveOr(block, cipher(keys, chain));
    case OFB:
        chain = cipher(keys, chain);
        return exclusiveOr(block, chain);
    default:
        return cipher(keys, block);
    }
}

/// One block of plain text; `chain` goes on to what the next block needs.
QByteArray QAESEncryption::decodeBlock(const QByteArray &keys, const QByteArray &block,
                                       QByteArray &chain)
{
    const QByteArray before = chain;
    switch (mode) {
    case CBC:
        chain = block;
        return exclusiveOr(inverseCipher(keys, block), before);
    case CFB:
        chain = block;
        return exclusiveOr(block, cipher(keys, before));
    case OFB:
        return encodeBlock(keys, block, chain);
    default:
        return inverseCipher(keys, block);
    }
}

/// Section 5.1.
QByteArray QAESEncryption::cipher(const QByteArray &keys, const QByteArray &block)
{
    QByteArray bytes = block.leftJustified(blockLength, '\0');
    state = &bytes;
    addRoundKey(keys, 0);
    for (int round = 1; round <= nr; ++round) {
        substitute(sbox);
        shiftRows(1);
        if (round < nr)
            mixColumns(kMixFactors);
        addRoundKey(keys, round);
    }
    state = nullptr;
    return bytes;
}

/// Section 5.3.
QByteArray QAESEncryption::inverseCipher(const QByteArray &keys, const QByteArray &block)
{
    QByteArray bytes = block.leftJustified(blockLength, '\0');
    state = &bytes;
    addRoundKey(keys, nr);
    for (int round = nr - 1; round >= 0; --round) {
        shiftRows(-1);
        substitute(inverseSbox);
        addRoundKey(keys, round);
        if (round > 0)
            mixColumns(kInverseMixFactors);
    }
    state = nullptr;
    return bytes;
}

void QAESEncryption::addRoundKey(const QByteArray &keys, int round)
{
    char *bytes = state->data();
    for (int i = 0; i < blockLength; ++i)
        bytes[i] = char(bytes[i] ^ keys.at(round * blockLength + i));
}

void QAESEncryption::substitute(const Box &box)
{
    for (char &byte : *state)
        byte = char(box[quint8(byte)]);
}

/// Turns row r left by r times `step` columns: 1 forward, -1 back.
void QAESEncryption::shiftRows(int step)
{
    char *bytes = state->data();
    for (int row = 1; row < kRows; ++row) {
        char old[kColumns] = {};
        for (int column = 0; column < nb; ++column)
            old[column] = bytes[row + column * kRows];
        for (int column = 0; column < nb; ++column)
            bytes[row + column * kRows] = old[(column + row * step + kColumns) % kColumns];
    }
}

/// Multiplies each column by the matrix whose first row is `factors`; each further row is the one
/// above it, turned right by one.
void QAESEncryption::mixColumns(const Factors &factors)
{
    char *bytes = state->data();
    for (char *column = bytes; column != bytes + blockLength; column += kRows) {
        quint8 old[kRows];
        std::copy_n(column, kRows, old);
        for (int row = 0; row < kRows; ++row) {
            quint8 sum = 0;
            for (int k = 0; k < kRows; ++k)
                sum = quint8(sum ^ multiply(old[(row + k) % kRows], factors[std::size_t(k)]));
            column[row] = char(sum);
        }
    }
}
