#pragma once

#include <QObject>
#include <QString>

/// The tool bar of one viewer, as far as it is the same in every host: the display hint, a short text for
/// the user of the viewer, such as what is left to be measured.
///
/// Owned by its viewer. Whoever draws the tool bar follows displayHintChanged().
class KyContextToolBar : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Plain text; empty takes the hint away.
    void setDisplayHint(const QString& inText);
    /// Empty at first.
    const QString& displayHint() const { return mDisplayHint; }

signals:
    /// Only for a hint that is not what it was.
    void displayHintChanged(const QString& inText);

private:
    QString mDisplayHint;
};
