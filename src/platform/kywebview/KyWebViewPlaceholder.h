#pragma once

#include "KyWebView.h"

#include <QList>

class QLabel;
class QPushButton;

/// Stands where a web view would, on a machine without one: it keeps address and history, says that it can't
/// show the page, and offers to open it in the user's own browser.
class KyWebViewPlaceholder final : public KyWebView
{
    Q_OBJECT

public:
    explicit KyWebViewPlaceholder(QWidget* inParent = nullptr);

    void load(const QUrl& inUrl) override;
    QUrl url() const override;
    QString title() const override;
    bool canGoBack() const override;
    bool canGoForward() const override;
    void back() override;
    void forward() override;
    void reload() override;
    void stop() override;
    void setZoom(double inFactor) override;

private:
    void goTo(qsizetype inPlace);

    QLabel* const mAddress;
    QPushButton* const mOpen;
    QList<QUrl> mHistory;
    qsizetype mPlace = 0;
};
