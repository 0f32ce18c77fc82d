#include <ovvolren/OvWindow.h>

#include <QTest>

#include <cmath>
#include <limits>

class tst_OvWindow : public QObject
{
    Q_OBJECT

private slots:
    void brightnessFollowsTheStandard_data();
    void brightnessFollowsTheStandard();
    void spanningReachesFromBlackToWhite_data();
    void spanningReachesFromBlackToWhite();
};

void tst_OvWindow::brightnessFollowsTheStandard_data()
{
    QTest::addColumn<int>("function");
    QTest::addColumn<double>("centre");
    QTest::addColumn<double>("width");
    QTest::addColumn<double>("value");
    QTest::addColumn<double>("brightness");
    const auto row = [](const char* inName, OvWindow::Function inFunction, double inCentre, double inWidth,
                        double inValue, double inBrightness) {
        QTest::newRow(inName) << int(inFunction) << inCentre << inWidth << inValue << inBrightness;
    };
    // The standard's own examples: c=2048, w=4096 map 0 to black and 4095 to white.
    row("4096, first", OvWindow::Linear, 2048, 4096, 0, 0);
    row("4096, last", OvWindow::Linear, 2048, 4096, 4095, 1);
    row("4096, half", OvWindow::Linear, 2048, 4096, 2047.5, 0.5);
    row("1, below", OvWindow::Linear, 2048, 1, 2047, 0);
    row("1, above", OvWindow::Linear, 2048, 1, 2048, 1);
    row("100 about 0, first", OvWindow::Linear, 0, 100, -50, 0);
    row("100 about 0, last", OvWindow::Linear, 0, 100, 49, 1);
    row("100 about 0, beyond", OvWindow::Linear, 0, 100, 50, 1);
    row("exact 4096, first", OvWindow::LinearExact, 2048, 4096, 0, 0);
    row("exact 4096, last", OvWindow::LinearExact, 2048, 4096, 4096, 1);
    row("exact 1, half", OvWindow::LinearExact, 2048, 1, 2048, 0.5);
    row("exact 1, last", OvWindow::LinearExact, 2048, 1, 2048.5, 1);
    row("exact, a fraction", OvWindow::LinearExact, 0, 0.5, 0.125, 0.75);
    row("sigmoid, half", OvWindow::Sigmoid, 40, 400, 40, 0.5);
    row("sigmoid, above", OvWindow::Sigmoid, 40, 400, 140, 1 / (1 + std::exp(-1.0)));
}

void tst_OvWindow::brightnessFollowsTheStandard()
{
    QFETCH(int, function);
    QFETCH(double, centre);
    QFETCH(double, width);
    QFETCH(double, value);
    QFETCH(double, brightness);
    const OvWindow window{.centre = centre, .width = width, .function = OvWindow::Function(function)};
    QVERIFY(std::fabs(window.brightness(value) - brightness) < 1e-12);
}

void tst_OvWindow::spanningReachesFromBlackToWhite_data()
{
    QTest::addColumn<double>("least");
    QTest::addColumn<double>("greatest");
    QTest::newRow("CT") << -1024.0 << 3071.0;
    QTest::newRow("fractions") << 0.25 << 0.75;
    QTest::newRow("one value") << 5.0 << 5.0;
    QTest::newRow("huge") << -1e300 << 1e300;
}

void tst_OvWindow::spanningReachesFromBlackToWhite()
{
    QFETCH(double, least);
    QFETCH(double, greatest);
    const OvWindow window = OvWindow::spanning(least, greatest);
    QVERIFY(window.width > 0);
    QVERIFY(window.brightness(greatest) >= 0.5);
    if (greatest > least && greatest < 1e100) {
        QCOMPARE(window.brightness(least), 0.0);
        QCOMPARE(window.brightness(greatest), 1.0);
        QVERIFY(std::fabs(window.brightness(least / 2 + greatest / 2) - 0.5) < 1e-9);
    }
}

QTEST_APPLESS_MAIN(tst_OvWindow)
#include "tst_OvWindow.moc"
