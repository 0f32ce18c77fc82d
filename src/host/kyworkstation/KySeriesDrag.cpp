#include "KySeriesDrag.h"

#include <kybase/KyLoadHelper.h>

#include <QtCore/QMimeData>

namespace {

constexpr char Separator = '\n';

} // namespace

QMimeData* KySeriesDrag::mimeData(const KyViewerLayer& inLayer)
{
    if (!inLayer.isValid())
        return nullptr;
    auto* data = new QMimeData;
    data->setData(QLatin1String(MimeType),
                  QByteArray::fromStdString(inLayer.study->studyInstanceUid()) + Separator +
                      QByteArray::fromStdString(inLayer.dicomSeries().seriesInstanceUid));
    return data;
}

KyViewerLayer KySeriesDrag::layer(const QMimeData& inData)
{
    const QList<QByteArray> uids = inData.data(QLatin1String(MimeType)).split(Separator);
    const auto session = KySessionContext::currentInstance();
    const auto* loader = session ? session->component<KyLoadHelper>(true) : nullptr;
    if (uids.size() != 2 || !loader)
        return {};
    KyViewerLayer layer{.study = loader->dicomDirectoryEntryForStudy(uids[0].constData())};
    while (layer.isValid() && layer.dicomSeries().seriesInstanceUid != uids[1].toStdString())
        ++layer.series;
    return layer.isValid() ? layer : KyViewerLayer();
}
