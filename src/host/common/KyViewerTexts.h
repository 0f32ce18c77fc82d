#pragma once

#include <QtCore/QCoreApplication>
#include <QtCore/QString>
#include <QtCore/QStringList>

class KyImageViewer;

/// What stands over the images of a viewer. A value.
struct KyViewerTexts
{
    Q_DECLARE_TR_FUNCTIONS(KyViewerTexts)

public:
    QStringList upperLeft;  ///< The patient.
    QStringList upperRight; ///< The study and the series.
    QStringList lowerLeft;  ///< The plane, its place and the window.
    QStringList lowerRight; ///< The second series and its weight, and how far reading is.
    QStringList notices;    ///< What people must know of what they see.
    QString message;        ///< In the middle: why there is nothing to see.
    QString hint;           ///< The display hint.

    /// Where left, right, upper and lower edge of the plane lie in the patient; empty when not known.
    QString left;
    QString right;
    QString upper;
    QString lower;

    static KyViewerTexts of(const KyImageViewer& inViewer);
};
