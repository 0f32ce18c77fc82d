#pragma once

#include "JxTopLevelWidget.h"

#include <QDialog>
#include <QPointer>

/// A dialog that stands above another window, its owner, without belonging to it.
///
/// The window system keeps it above the owner, and takes it along when that is minimized. Its life is in the
/// hands of whoever made it. When the owner goes, the dialog lets go of it, and is rejected in case it is on
/// show.
template <class Base>
class JxDialogWrapper : public JxTopLevelWidgetWrapper<Base>
{
public:
    /// \a inOwner may be null, or any widget of the window in question.
    explicit JxDialogWrapper(QWidget* inOwner);

    /// The window above which this dialog stands; null without one.
    QWidget* owner() const { return mOwner; }

    /// A dialog that was never moved comes up in the middle of its owner.
    void setVisible(bool inVisible) override;

private:
    QPointer<QWidget> mOwner;
};

/// The dialog of the client. GUI thread only.
class JxDialog : public JxDialogWrapper<QDialog>
{
    Q_OBJECT

public:
    explicit JxDialog(QWidget* inOwner = nullptr);

    /// Lets the window system know that \a ioWindow stands above \a inOwner; with null, above none.
    static void standAbove(QWidget& ioWindow, const QWidget* inOwner);
    /// Moves \a ioWindow, which has its size, to the middle of \a inOwner.
    static void centerOn(QWidget& ioWindow, const QWidget& inOwner);
};

template <class Base>
JxDialogWrapper<Base>::JxDialogWrapper(QWidget* inOwner)
    : mOwner(inOwner ? inOwner->window() : nullptr)
{
    if (!mOwner)
        return;
    QObject::connect(mOwner, &QObject::destroyed, this, [this] {
        if (this->isVisible())
            this->reject();
    });
}

template <class Base>
void JxDialogWrapper<Base>::setVisible(bool inVisible)
{
    if (inVisible && this->isWindow() && !this->isVisible()) {
        if (mOwner && mOwner->isVisible() && !this->testAttribute(Qt::WA_Moved)) {
            this->ensurePolished();
            if (!this->testAttribute(Qt::WA_Resized))
                this->adjustSize();
            JxDialog::centerOn(*this, *mOwner);
        }
        JxDialog::standAbove(*this, mOwner);
    }
    JxTopLevelWidgetWrapper<Base>::setVisible(inVisible);
}
