#pragma once

#include <common/KyImageViewer.h>

class QMimeData;

/// Series on their way from the study list to a viewer, by drag and drop: their study and series instance
/// UIDs.
class KySeriesDrag
{
public:
    KySeriesDrag() = delete;

    static constexpr const char* MimeType = "application/x-ky-series";

    /// The caller owns it. Null for an invalid layer.
    static QMimeData* mimeData(const KyViewerLayer& inLayer);

    /// The series of the session that the data names; invalid when there is none.
    static KyViewerLayer layer(const QMimeData& inData);
};
