#pragma once

#include <QByteArray>
#include <QObject>

#include <array>

/// AES as FIPS 197 defines it, over a whole byte array, in one of four block modes and with one of
/// three paddings. One thread at a time: an object holds the block it works on. The caller owns it
/// and hands in key and initialisation vector with each call.
///
/// A bad vector is the one failure, and gives an empty array. A key of another size than the
/// level's isn't refused: missing bytes count as zero, further ones aren't looked at.
class QAESEncryption : public QObject
{
    Q_OBJECT

public:
    enum Aes : int { AES_128 = 0, AES_192 = 1, AES_256 = 2 };
    enum Mode : int { ECB = 0, CBC = 1, CFB = 2, OFB = 3 };
    enum Padding : int { ZERO = 0, PKCS7 = 1, ISO = 2 };

    /// A level that isn't one of the three counts as `AES_128`. A mode that isn't one of the four
    /// works as `ECB`, but wants a vector as the others do. A padding that isn't one of the three
    /// appends what `ZERO` does, and takes nothing off.
    QAESEncryption(Aes level, Mode mode, Padding padding);

    /// Cipher text of `text` with its padding: a multiple of 16 bytes. Every mode but `ECB` wants
    /// a vector of 16 bytes, else the result is empty. Writes the keys to the debug log.
    QByteArray encode(const QByteArray &text, const QByteArray &key, const QByteArray &vector);

    /// Plain text of `text` with any padding still on it; vector as for `encode`. A last block of
    /// less than 16 bytes is filled up with zeros and comes out whole in `ECB` and `CBC`; in `CFB`
    /// and `OFB` it comes out with its own size.
    QByteArray decode(const QByteArray &text, const QByteArray &key, const QByteArray &vector);

    /// `text` less this object's padding, as `RemovePadding`.
    QByteArray removePadding(const QByteArray &text) const;

    /// The key schedule (FIPS 197, section 5.2): 176, 209 or 240 bytes by level.
    QByteArray expandKey(const QByteArray &key) const;

    /// `encode` with an object made for this one call.
    static QByteArray Crypt(Aes level, Mode mode, const QByteArray &text, const QByteArray &key,
                            const QByteArray &vector, Padding padding);

    /// `decode` with an object made for this one call.
    static QByteArray Decrypt(Aes level, Mode mode, const QByteArray &text, const QByteArray &key,
                              const QByteArray &vector, Padding padding);

    /// `expandKey` with an object made for this one call.
    static QByteArray ExpandKey(Aes level, Mode mode, const QByteArray &key);

    /// `text` less its padding: the zeros at its end; as many bytes as the last one says; or the
    /// zeros and the 0x80 before them, without which the text stays whole.
    static QByteArray RemovePadding(const QByteArray &text, Padding padding);

private:
    using Factors = std::array<quint8, 4>;

    bool vectorFits(const QByteArray &vector) const;
    QByteArray paddingFor(int size) const;
    QByteArray encodeBlock(const QByteArray &keys, const QByteArray &block, QByteArray &chain);
    QByteArray decodeBlock(const QByteArray &keys, const QByteArray &block, QByteArray &chain);
    QByteArray cipher(const QByteArray &keys, const QByteArray &block);
    QByteArray inverseCipher(const QByteArray &keys, const QByteArray &block);
    void addRoundKey(const QByteArray &keys, int round);
    void substitute(const std::array<quint8, 256> &box);
    void shiftRows(int step);
    void mixColumns(const Factors &factors);

    int nb = 4; ///< words of a block
    int blockLength = 16;
    int level;
    int mode;
    int nk;          ///< words of a key
    int keyLen;      ///< bytes of a key
    int nr;          ///< rounds
    int expandedKey; ///< bytes of the key schedule
    int padding;
    QByteArray *state = nullptr; ///< the block that is worked on: row r, column c at r + 4 c
    std::array<quint8, 256> sbox;
    std::array<quint8, 256> inverseSbox;
    std::array<quint8, 10> rcon;
};
