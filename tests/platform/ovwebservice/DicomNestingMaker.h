#pragma once

#include <QByteArray>

/// The bytes of sequences (0040,0275) in one another, to be put behind the data set of a DicomFileMaker.
/// DCMTK could not write that many.
class DicomNestingMaker
{
public:
    bool bigEndian = false;
    bool implicit = false;
    bool knownLengths = false;

    QByteArray levels(int inCount) const
    {
        const int headers = (implicit ? 8 : 12) + 8;
        QByteArray bytes;
        for (int inside = inCount - 1; inside >= 0; --inside) {
            const quint32 content = knownLengths ? quint32(inside * headers) : 0xFFFFFFFF;
            bytes += sequence(knownLengths ? content + 8 : content) + item(content);
        }
        for (int i = 0; !knownLengths && i < inCount; ++i)
            bytes += number(0xFFFE, 2) + number(0xE00D, 2) + number(0, 4) + sequenceEnd();
        return bytes;
    }

    /// One sequence of many empty items.
    QByteArray items(int inCount) const
    {
        QByteArray bytes = sequence(knownLengths ? quint32(inCount * 8) : 0xFFFFFFFF);
        for (int i = 0; i < inCount; ++i) {
            bytes += item(knownLengths ? 0 : 0xFFFFFFFF);
            if (!knownLengths)
                bytes += number(0xFFFE, 2) + number(0xE00D, 2) + number(0, 4);
        }
        return knownLengths ? bytes : bytes + sequenceEnd();
    }

private:
    QByteArray number(quint32 inNumber, int inSize) const
    {
        QByteArray bytes;
        for (int i = 0; i < inSize; ++i)
            bytes += char(inNumber >> 8 * (bigEndian ? inSize - 1 - i : i));
        return bytes;
    }
    QByteArray sequence(quint32 inLength) const
    {
        const QByteArray tag = number(0x0040, 2) + number(0x0275, 2);
        return (implicit ? tag : tag + QByteArray("SQ\0\0", 4)) + number(inLength, 4);
    }
    QByteArray item(quint32 inLength) const
    {
        return number(0xFFFE, 2) + number(0xE000, 2) + number(inLength, 4);
    }
    QByteArray sequenceEnd() const { return number(0xFFFE, 2) + number(0xE0DD, 2) + number(0, 4); }
};
