#pragma once

#include <QtCore/QObject>
#include <QtCore/QString>

/// Identifiers and stable hashes of texts, published as `new IdGenerator()`. It keeps no state: any two
/// objects answer alike. The script that makes one owns it.
///
/// The hashes are made of the SHA-1 digest (FIPS 180-4) of a text in UTF-8. They are the same on every
/// machine and in every version, so that they may be stored; they keep no secrets.
class KyScriptIdGenerator : public QObject
{
    Q_OBJECT

public:
    /// Cheap and without effects, since every engine makes one to check that scripts can.
    Q_INVOKABLE explicit KyScriptIdGenerator(QObject* parent = nullptr);

    /// A text that no other call gives. Its form is the platform's affair.
    Q_INVOKABLE QString generateId() const;

    /// A random UUID (RFC 4122, version 4) of 36 characters, or of 38 with its braces.
    Q_INVOKABLE QString generateUuid(bool withoutCurlyBraces = true) const;

    /// \a numDigits capital letters and digits, which stand for \a source. A number below 1 or above 20
    /// counts as 20. Shorter hashes are the beginning of longer ones.
    Q_INVOKABLE QString asciiHash(const QString& source, int numDigits = 12) const;

    /// A number from 0 up to and including 1, evenly spread, which stands for \a source. Each \a startIdx
    /// from 0 to 16 gives another one; any other value counts as 0.
    Q_INVOKABLE float sigmoidHash(const QString& source, int startIdx = 0) const;
};
