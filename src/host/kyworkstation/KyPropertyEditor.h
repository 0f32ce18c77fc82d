#pragma once

#include <kybase/KyNotifiable.h>

#include <QtWidgets/QWidget>

#include <functional>

class OvEnum;
class OvVariant;
class QToolButton;

/// Edits one application property: a widget that fits the type of its value, and a button that takes it back
/// to its default.
///
/// A change holds at once and is stored in the user's settings, in place of what a script may have set; a
/// text that the property can't read is replaced by its value. The editor follows changes from elsewhere. Its
/// object name is the id of the property, which it must not outlive.
class KyPropertyEditor : public QWidget, public KyNotifiable
{
    Q_OBJECT

public:
    KyPropertyEditor(OvVariant& ioProperty, const QString& inLabel, QWidget* inParent);

    /// Makes the Tab key lead here from \a inPrevious.
    void followInTabOrder(const KyPropertyEditor& inPrevious);

    bool eventFilter(QObject* inWatched, QEvent* inEvent) override;
    void notified(const KyNotification& inNotification) override;

private:
    QWidget* makeEditor();
    QWidget* makeCheckBox();
    QWidget* makeIntegerBox();
    QWidget* makeNumberBox();
    QWidget* makeChoice(const OvEnum& inEnumeration);
    QWidget* makeLine();
    void store(const QString& inText);
    void refresh();
    void reset();
    void tellOfChange();

    OvVariant& mProperty;
    QToolButton* const mReset;
    std::function<void()> mShowValue; ///< Puts the property's value into the editor.
};
