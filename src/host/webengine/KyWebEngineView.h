#pragma once

#include <kywebview/KyWebView.h>

#include <memory>

class KyWebEngineProfile;
class QWebEngineNewWindowRequest;
class QWebEngineView;

/// A page on Qt WebEngine. What a page would open in a window of its own opens here, too.
///
/// Downloads are not taken, and cameras, microphones and the like are not given. A page that has crashed says
/// so, and can be loaded again.
class KyWebEngineView final : public KyWebView
{
    Q_OBJECT

public:
    KyWebEngineView(std::shared_ptr<KyWebEngineProfile> inProfile, QWidget* inParent);
    ~KyWebEngineView() override;

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
    void openHere(QWebEngineNewWindowRequest& ioRequest);
    void tellOfCrash();

    const std::shared_ptr<KyWebEngineProfile> mProfile;
    QWebEngineView* const mView;
};
