#pragma once

#include "OvRegistryStore.h"

#include <QByteArray>

/// The text of the file of OvRegistryFileStore: a header and one line per change.
class OvRegistryJournal
{
public:
    enum class State
    {
        Sound,
        Damaged, ///< A journal with lines that can't be read.
        Foreign  ///< No journal of a known version at all.
    };

    struct Reading
    {
        State state = State::Foreign;
        OvRegistryStore::Content content;
        int lines = 0;             ///< That could be read, the header not counted.
        int badLines = 0;          ///< That could not.
        bool endsWithBreak = true; ///< Whether a line can be appended.
    };

    /// A first line, with a mark of its own each time, so that two writings of a file can be told apart.
    static QByteArray newHeader();
    static QByteArray line(const OvRegistryStore::Change& inChange);
    /// \a inContent whole, behind \a inHeader.
    static QByteArray text(const QByteArray& inHeader, const OvRegistryStore::Content& inContent);

    /// What \a inText makes of \a inBase. The lines that can't be read are passed over.
    static Reading read(const QByteArray& inText, const OvRegistryStore::Content& inBase);
};
