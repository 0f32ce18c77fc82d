#pragma once

#include <kywebview/KyWebView.h>
#include <kywebview/KyWebViewRuntime.h>

#include <QStringList>

/// A view that notes what it is asked to do.
class TestWebView final : public KyWebView
{
public:
    using KyWebView::KyWebView;

    void load(const QUrl& inUrl) override
    {
        calls.append("load " + inUrl.toString());
        address = inUrl;
        emit pageChanged();
    }
    QUrl url() const override { return address; }
    QString title() const override { return name; }
    bool canGoBack() const override { return hasBack; }
    bool canGoForward() const override { return hasForward; }
    void back() override { calls.append("back"); }
    void forward() override { calls.append("forward"); }
    void reload() override { calls.append("reload"); }
    void stop() override { calls.append("stop"); }
    void setZoom(double inFactor) override { calls.append(QString("zoom %1").arg(inFactor)); }

    QStringList calls;
    QUrl address = QUrl("about:blank");
    QString name;
    bool hasBack = false;
    bool hasForward = false;
};

class TestWebViewRuntime final : public KyWebViewRuntime
{
public:
    QString version() const override { return "1.2.3"; }
    KyWebView* makeView(const QString& inProfile, QWidget* inParent) override
    {
        profiles.append(inProfile);
        return last = new TestWebView(inParent);
    }

    QStringList profiles;
    TestWebView* last = nullptr;
};
