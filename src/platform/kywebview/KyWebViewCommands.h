#pragma once

#include <QByteArray>
#include <QRect>
#include <QString>
#include <QStringList>

#include <optional>

/// The texts that go between a program and its browser; docs/browser-protocol.md describes them.
class KyWebViewCommands
{
public:
    KyWebViewCommands() = delete;

    /// The commands in a text, each without its ";" and the white space around it. Empty ones are left out.
    static QStringList split(const QString& inText);
    /// The word in front of the first blank.
    static QString word(const QString& inCommand);
    /// What stands behind that blank, less white space around it.
    static QString argument(const QString& inCommand);

    /// Reads "TOP LEFT BOTTOM RIGHT". No value when these are not four numbers; an empty rectangle stands for
    /// no place.
    static std::optional<QRect> geometry(const QString& inArgument);

    /// Messages of the browser.
    static QString geometryMessage(const QRect& inGeometry);
    static QString isHiddenMessage(bool inIsHidden);
    static QString errorMessage(const QString& inCommand);
};

/// Takes commands from a stream that cuts them anywhere, also in the middle of a letter.
class KyWebViewCommandReader
{
public:
    /// What is longer than this without its ";" is dropped up to that.
    static constexpr qsizetype LongestCommand = 1 << 20;

    /// The commands that are whole with these bytes of UTF-8, in their order.
    QStringList read(const QByteArray& inBytes);

private:
    QByteArray mRest;
    bool mIsTooLong = false;
};
