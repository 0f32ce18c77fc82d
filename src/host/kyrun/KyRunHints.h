#pragma once

#include <QtCore/QObject>

class KyViewerLayout;

/// Writes the display hints of the viewers to the log, since there is no window that shows them.
///
/// Ends before the layout.
class KyRunHints : public QObject
{
    Q_OBJECT

public:
    explicit KyRunHints(KyViewerLayout& inLayout);

private:
    void follow();
    void tell(const QString& inHint);

    KyViewerLayout& mLayout;
};
