#pragma once

#include <QString>

class KyWebView;
class QWidget;

/// Port: the engine behind web views. The hosts have one on Qt WebEngine; without one KyWebViewPlaceholder
/// stands in.
///
/// Somebody's object: construction makes it the one that instance() finds, destruction ends that. GUI thread
/// only.
class KyWebViewRuntime
{
public:
    KyWebViewRuntime();
    virtual ~KyWebViewRuntime();
    KyWebViewRuntime(const KyWebViewRuntime&) = delete;
    KyWebViewRuntime& operator=(const KyWebViewRuntime&) = delete;

    /// Null when there is no web view.
    static KyWebViewRuntime* instance();

    /// The version of the engine, never empty.
    virtual QString version() const = 0;
    /// A view whose cookies and stored data are those of \a inProfile, a name. Null when none can be made.
    virtual KyWebView* makeView(const QString& inProfile, QWidget* inParent) = 0;
};
