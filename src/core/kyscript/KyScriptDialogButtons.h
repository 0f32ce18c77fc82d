#pragma once

#include <QtCore/QObject>
#include <QtCore/QVariant>

class QButtonGroup;
class QDialogButtonBox;
class QMenu;
class QPushButton;
class QWidget;

/// The buttons of a dialog of scripts: makes them from the script's description, switches them on and off,
/// and tells which one the user has chosen. Made by KyScriptDialog, whose operations say what the arguments
/// are.
class KyScriptDialogButtons : public QObject
{
    Q_OBJECT

public:
    /// The buttons stand in \a inBox and have their indices as ids in \a inGroup; menus become children of
    /// \a inDialog, which owns all three and this object.
    KyScriptDialogButtons(QWidget* inDialog, QDialogButtonBox* inBox, QButtonGroup* inGroup);

    int count() const;
    /// Null for an index out of range.
    QPushButton* button(int inIndex) const;

    void set(const QVariantList& inDescriptions);
    void setToolTips(const QStringList& inToolTips);
    void setEnabled(const QVariant& inIndex, bool inEnabled);
    void setAllEnabled(const QVariantList& inIndices, bool inEnabled);

Q_SIGNALS:
    /// The user has clicked a button, or chosen an item of its menu, whose index is -1 for none. The text is
    /// what to log of it.
    void chosen(int inButton, int inMenuItem, const QString& inLogText);

private:
    void add(const QVariant& inDescription, int inIndex);
    QMenu* makeMenu(const QString& inButtonText, const QVariantList& inItems, int inIndex);
    void setButtonEnabled(int inIndex, bool inEnabled);
    void setItemEnabled(const QVariantList& inPair, bool inEnabled);

    QWidget* const mDialog;
    QDialogButtonBox* const mBox;
    QButtonGroup* const mGroup;
};
