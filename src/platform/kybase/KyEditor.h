#pragma once

#include <string>

class QObject;

/// An editor of the application, such as that of the report, which scripts can drive.
///
/// An editor is known by its key from its construction to its destruction; whoever made it owns it. GUI
/// thread only.
class KyEditor
{
public:
    /// \a inKey is Latin-1. An editor with a null or empty key is not found.
    explicit KyEditor(const char* inKey);
    virtual ~KyEditor();
    KyEditor(const KyEditor&) = delete;
    KyEditor& operator=(const KyEditor&) = delete;

    /// The editor of that key, which is compared exactly; of several the newest. Null when there is none.
    /// With \a inIsToBeOpened the editor is opened as well.
    static KyEditor* editor(const char* inKey, bool inIsToBeOpened);

    const std::string& key() const { return mKey; }

    /// The object by which scripts drive the editor. With a null \a inParent the caller owns it. It holds the
    /// editor weakly and answers neutrally once that has gone. Null for an editor that offers nothing.
    virtual QObject* scriptObject(QObject* inParent);

    /// Brings the editor in front of the user.
    virtual void open() = 0;

private:
    const std::string mKey;
};
