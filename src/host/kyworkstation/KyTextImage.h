#pragma once

#include <QtGui/QColor>
#include <QtGui/QFont>
#include <QtGui/QPixmap>

class QPainter;

/// A text as an image that is readable over black and over white, made anew only when it is not what it was:
/// to lay out the same texts for each image that is scrolled to would take as long as the image itself.
class KyTextImage
{
public:
    /// Draws \a inText into \a inRoom; \a inFlags as QPainter::drawText() has them.
    void draw(QPainter& ioPainter, const QRect& inRoom, int inFlags, const QString& inText,
              const QColor& inColour);

private:
    /// All that the image depends on.
    struct Key
    {
        QString text;
        QRect room;
        int flags = 0;
        QColor colour;
        QFont font;
        qreal pixelRatio = 0;

        bool operator==(const Key&) const = default;
    };

    Key mKey;
    QRect mPlace;
    QPixmap mImage;
};
