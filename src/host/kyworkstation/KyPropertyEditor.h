#pragma once

#include <QtWidgets/QWidget>

#include <functional>

class OvEnum;
class OvVariant;
class QToolButton;

/// Edits one application property: a widget that fits the type of its value, and a button that takes it back
/// to its default.
///
/// A change holds at once and is stored in the user's settings; a text that the property can't read is
/// replaced by its value. The editor follows changes from elsewhere. It must not outlive its property.
class KyPropertyEditor : public QWidget
{
    Q_OBJECT

public:
    KyPropertyEditor(OvVariant& ioProperty, const QString& inLabel, QWidget* inParent);

    bool eventFilter(QObject* inWatched, QEvent* inEvent) override;

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

    OvVariant& mProperty;
    QToolButton* const mReset;
    std::function<void()> mShowValue; ///< Puts the property's value into the editor.
};
