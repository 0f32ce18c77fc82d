#include <support/KyTest.h>

#include <jxbase/JxAnimatedProgressIcon.h>

#include <QElapsedTimer>
#include <QPainter>
#include <QPalette>

#include <cmath>
#include <memory>
#include <optional>

namespace {

/// A target that keeps what it got.
struct Target
{
    explicit Target(bool inIsDelayed = false)
    {
        JxAnimatedProgressIcon::setIconTo(
            this, [this](const QIcon& icon) { icons.append(icon); }, inIsDelayed);
    }
    ~Target() { JxAnimatedProgressIcon::removeIconFrom(this, false); }
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    QList<QIcon> icons;
};

QImage picture(const QIcon& inIcon, int inExtent = 32, qreal inRatio = 1, QIcon::Mode inMode = QIcon::Normal)
{
    return inIcon.pixmap(QSize(inExtent, inExtent), inRatio, inMode)
        .toImage()
        .convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

/// The number of pixels that are neither clear nor wholly covered by the full colour.
int partlyCovered(const QImage& inImage)
{
    int count = 0;
    for (int y = 0; y < inImage.height(); ++y) {
        for (int x = 0; x < inImage.width(); ++x) {
            const int alpha = qAlpha(inImage.pixel(x, y));
            count += alpha > 60 && alpha < 250 ? 1 : 0;
        }
    }
    return count;
}

/// The direction, in turns clockwise from the top, of the middle of the part with the full colour.
double direction(const QImage& inImage)
{
    double sumX = 0, sumY = 0;
    const double middle = (inImage.width() - 1) / 2.0;
    for (int y = 0; y < inImage.height(); ++y) {
        for (int x = 0; x < inImage.width(); ++x) {
            if (qAlpha(inImage.pixel(x, y)) > 200) {
                sumX += x - middle;
                sumY += y - middle;
            }
        }
    }
    const double turn = std::atan2(sumX, -sumY) / (2 * M_PI);
    return turn < 0 ? turn + 1 : turn;
}

} // namespace

class tst_JxAnimatedProgressIcon final : public QObject
{
    Q_OBJECT

private slots:
    void firstFrameComesAtOnce()
    {
        const Target target;
        QCOMPARE(target.icons.size(), 1);
        QVERIFY(!target.icons.first().isNull());
    }

    void furtherFramesFollowAndDiffer()
    {
        const Target target;
        QTRY_VERIFY(target.icons.size() >= 4);
        QVERIFY(picture(target.icons.first()) != picture(target.icons.last()));
    }

    void delayedFirstFrameComesLater()
    {
        QElapsedTimer clock;
        clock.start();
        const Target target(true);
        QVERIFY(target.icons.isEmpty());
        QTRY_VERIFY(!target.icons.isEmpty());
        QVERIFY2(clock.elapsed() >= 500, qPrintable(QString::number(clock.elapsed())));
    }

    void delayedTargetThatIsSoonTakenOffGetsNothing()
    {
        Target target(true);
        JxAnimatedProgressIcon::removeIconFrom(&target, true);
        const Target other;
        QTRY_VERIFY(other.icons.size() >= 14);
        QVERIFY(target.icons.isEmpty());
    }

    void removedTargetGetsNoMoreFrames()
    {
        Target target;
        JxAnimatedProgressIcon::removeIconFrom(&target, false);
        const Target other;
        QTRY_VERIFY(other.icons.size() >= 4);
        QCOMPARE(target.icons.size(), 1);
    }

    void removedTargetIsClearedOnDemand()
    {
        Target target;
        JxAnimatedProgressIcon::removeIconFrom(&target, true);
        QCOMPARE(target.icons.size(), 2);
        QVERIFY(target.icons.last().isNull());
        JxAnimatedProgressIcon::removeIconFrom(&target, true);
        QCOMPARE(target.icons.size(), 2);
    }

    void severalTargetsGetTheSameFrames()
    {
        const Target first;
        QTRY_VERIFY(first.icons.size() >= 3);
        const Target second;
        const Target third;
        QTRY_VERIFY(third.icons.size() >= 5);
        QCOMPARE(second.icons.size(), third.icons.size());
        for (qsizetype back = 1; back <= 3; ++back) {
            const QImage ofFirst = picture(first.icons.at(first.icons.size() - back));
            QCOMPARE(picture(second.icons.at(second.icons.size() - back)), ofFirst);
            QCOMPARE(picture(third.icons.at(third.icons.size() - back)), ofFirst);
        }
    }

    void oneTargetEndsWithoutTheOthers()
    {
        std::optional<Target> first(std::in_place);
        const Target second;
        first.reset();
        QTRY_VERIFY(second.icons.size() >= 4);
    }

    void targetThatIsSetAgainGetsTheNewFunctionOnly()
    {
        Target target;
        int calls = 0;
        JxAnimatedProgressIcon::setIconTo(
            &target, [&](const QIcon&) { ++calls; }, false);
        QTRY_VERIFY(calls >= 3);
        QCOMPARE(target.icons.size(), 1);
    }

    void nullTargetsAndFunctionsAreIgnored()
    {
        int calls = 0;
        JxAnimatedProgressIcon::setIconTo(
            nullptr, [&](const QIcon&) { ++calls; }, false);
        QCOMPARE(calls, 0);
        JxAnimatedProgressIcon::setIconTo(this, {}, false);
        JxAnimatedProgressIcon::removeIconFrom(this, true);
        JxAnimatedProgressIcon::removeIconFrom(nullptr, true);
    }

    void targetMayTakeItselfOff_data()
    {
        QTest::addColumn<int>("frame");
        QTest::newRow("at the first frame") << 1;
        QTest::newRow("at a later one") << 3;
    }
    void targetMayTakeItselfOff()
    {
        QFETCH(int, frame);
        int calls = 0;
        JxAnimatedProgressIcon::setIconTo(
            &calls,
            [&](const QIcon&) {
                if (++calls == frame)
                    JxAnimatedProgressIcon::removeIconFrom(&calls, false);
            },
            false);
        QTRY_COMPARE(calls, frame);
        const Target other;
        QTRY_VERIFY(other.icons.size() >= 4);
        QCOMPARE(calls, frame);
    }

    void targetMayTakeOffAllOthers()
    {
        int calls = 0;
        auto first = std::make_unique<Target>(), last = std::make_unique<Target>();
        JxAnimatedProgressIcon::setIconTo(
            &calls,
            [&](const QIcon&) {
                if (++calls == 3) {
                    first.reset();
                    last.reset();
                    JxAnimatedProgressIcon::removeIconFrom(&calls, true);
                }
            },
            false);
        QTRY_COMPARE(calls, 4); // the null icon comes last
        QVERIFY(!first && !last);
    }

    void turnIsCalm()
    {
        const QImage start = picture(JxAnimatedProgressIcon::frame(0));
        QElapsedTimer clock;
        const Target target;
        clock.start();
        const QImage first = picture(target.icons.first());
        // Whole turns only: it is the first one's turn that is measured.
        QTRY_VERIFY(target.icons.size() > 2 && picture(target.icons.last()) == first);
        QVERIFY2(clock.elapsed() >= 1000, qPrintable(QString::number(clock.elapsed())));
        QVERIFY(!start.isNull());
    }

    void framesGoRoundClockwise_data()
    {
        QTest::addColumn<double>("turn");
        for (const double turn : {0.0, 0.1, 0.25, 0.5, 0.7, 0.9})
            QTest::addRow("%.2f", turn) << turn;
    }
    void framesGoRoundClockwise()
    {
        QFETCH(double, turn);
        const double first = direction(picture(JxAnimatedProgressIcon::frame(0), 64));
        const double now = direction(picture(JxAnimatedProgressIcon::frame(turn), 64));
        const double gone = now - first < -0.01 ? now - first + 1 : now - first;
        QVERIFY2(std::abs(gone - turn) < 0.02, qPrintable(QString::number(gone)));
    }

    void frameHasTheSizeThatIsAskedFor_data()
    {
        QTest::addColumn<int>("extent");
        QTest::addColumn<qreal>("ratio");
        for (const int extent : {12, 16, 22, 48}) {
            for (const qreal ratio : {1.0, 1.25, 1.5, 2.0, 3.0})
                QTest::addRow("%d at %.2f", extent, ratio) << extent << ratio;
        }
    }
    void frameHasTheSizeThatIsAskedFor()
    {
        QFETCH(int, extent);
        QFETCH(qreal, ratio);
        const QPixmap pixmap = JxAnimatedProgressIcon::frame(0.3).pixmap(QSize(extent, extent), ratio);
        QCOMPARE(pixmap.size(), (QSizeF(extent, extent) * ratio).toSize());
        QVERIFY(std::abs(pixmap.devicePixelRatio() - ratio) < 0.05);
    }

    /// A small picture that is blown up has soft edges everywhere; one that is drawn in its size has them
    /// along the ring only.
    void frameIsSharpAtEveryResolution()
    {
        const QIcon icon = JxAnimatedProgressIcon::frame(0.3);
        const QImage drawn = picture(icon, 16, 4);
        const QImage blownUp =
            picture(icon, 16).scaled(drawn.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        QCOMPARE(drawn.width(), 64);
        QVERIFY(partlyCovered(drawn) * 2 < partlyCovered(blownUp));
    }

    void frameStaysInsideItsSize()
    {
        const QImage image = picture(JxAnimatedProgressIcon::frame(0.4), 40);
        for (int i = 0; i < 40; ++i) {
            QVERIFY(qAlpha(image.pixel(i, 0)) < 40 && qAlpha(image.pixel(i, 39)) < 40);
            QVERIFY(qAlpha(image.pixel(0, i)) < 40 && qAlpha(image.pixel(39, i)) < 40);
        }
    }

    void frameHasTheColourOfTheText_data()
    {
        QTest::addColumn<QColor>("text");
        QTest::newRow("light palette") << QColor(20, 20, 20);
        QTest::newRow("dark palette") << QColor(240, 240, 240);
    }
    void frameHasTheColourOfTheText()
    {
        QFETCH(QColor, text);
        const QPalette before = QGuiApplication::palette();
        QPalette palette = before;
        palette.setColor(QPalette::WindowText, text);
        QGuiApplication::setPalette(palette);
        const QImage image = picture(JxAnimatedProgressIcon::frame(0), 64);
        QGuiApplication::setPalette(before);
        int full = 0;
        for (int y = 0; y < 64; ++y) {
            for (int x = 0; x < 64; ++x) {
                if (qAlpha(image.pixel(x, y)) == 255) {
                    ++full;
                    QCOMPARE(image.pixelColor(x, y), text);
                }
            }
        }
        QVERIFY(full > 20);
    }

    void disabledFrameIsPaler()
    {
        const QIcon icon = JxAnimatedProgressIcon::frame(0);
        QVERIFY(picture(icon, 32, 1, QIcon::Disabled) != picture(icon));
    }

    void frameCanBeCopiedAndPainted()
    {
        QIcon copy = JxAnimatedProgressIcon::frame(0.25);
        copy.addPixmap(QPixmap(1, 1)); // detaches
        QImage image(20, 20, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        copy.paint(&painter, 0, 0, 20, 20);
        painter.end();
        QVERIFY(direction(image) > 0);
    }
};

KY_TEST_MAIN(tst_JxAnimatedProgressIcon)
#include "tst_JxAnimatedProgressIcon.moc"
