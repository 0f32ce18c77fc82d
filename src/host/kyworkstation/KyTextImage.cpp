#include "KyTextImage.h"

#include <QtGui/QPainter>

namespace {

constexpr int Overhang = 3; ///< Of letters and their shadow, in pixels.

} // namespace

void KyTextImage::draw(QPainter& ioPainter, const QRect& inRoom, int inFlags, const QString& inText,
                       const QColor& inColour)
{
    if (inText.isEmpty())
        return;
    Key key{.text = inText,
            .room = inRoom,
            .flags = inFlags,
            .colour = inColour,
            .font = ioPainter.font(),
            .pixelRatio = ioPainter.device()->devicePixelRatioF()};
    if (key != mKey) {
        mPlace = ioPainter.boundingRect(inRoom, inFlags, inText)
                     .adjusted(-Overhang, -Overhang, Overhang, Overhang);
        mImage = QPixmap(mPlace.size() * key.pixelRatio);
        mImage.setDevicePixelRatio(key.pixelRatio);
        mImage.fill(Qt::transparent);
        QPainter painter(&mImage);
        painter.setFont(key.font);
        painter.translate(-mPlace.topLeft());
        painter.setPen(Qt::black);
        painter.drawText(inRoom.translated(1, 1), inFlags, inText);
        painter.setPen(inColour);
        painter.drawText(inRoom, inFlags, inText);
        mKey = std::move(key);
    }
    ioPainter.drawPixmap(mPlace.topLeft(), mImage);
}
