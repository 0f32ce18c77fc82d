#pragma once

#include "KyScriptDialog.h"

#include <QtWidgets/QTextBrowser>

class KyScriptDialogButtons;
class KyScriptKeeper;
class QButtonGroup;
class QDialogButtonBox;
class QIcon;
class QLabel;
class QLineEdit;

/// Shows that something is under way, or how it ended: an animated icon and a text.
class StatusIndicator final : public QWidget
{
public:
    explicit StatusIndicator(QWidget* inParent);
    ~StatusIndicator() override;

    void start(const QString& inStatus);
    void stop(const QString& inStatus);
    bool isBusy() const;

private:
    void showIcon(const QIcon& inIcon);
    void tell(const QString& inStatus);

    QLabel* const mFront;
    QLabel* const mBack;
};

/// What a dialog consists of, and what it knows of itself. For the sources of KyScriptDialog only.
struct KyScriptDialog::Private
{
    explicit Private(KyScriptDialog* inDialog);

    QTextEdit* field() const { return useTextBrowser ? textBrowser : edit; }
    void scroll(bool inToBottom) const;

    QLabel* const label;
    QTextEdit* const edit;
    QLineEdit* const lineEdit;
    QTextBrowser* const textBrowser;
    QButtonGroup* const group;
    QDialogButtonBox* const box;
    StatusIndicator* const indicator;
    bool useTextBrowser = false;
    bool manuallyCloseDialog = false;
    bool editable = false;
    QString context;
    bool autoClose = false;
    int result = 0;
    int clickedButton = NoButton;
    int buttonMenuItem = -1;

    KyScriptDialogButtons* const buttons;
    KyScriptKeeper* const keeper;
    bool isToScroll = false; ///< To the bottom, once the dialog is on show.
};
