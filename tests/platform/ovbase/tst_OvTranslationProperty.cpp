#include <support/KyTest.h>

#include <ovbase/OvTranslationProperty.h>

#include <QTranslator>

namespace {

[[maybe_unused]] const char* const Early = OvTranslationProperty::translate("Early.Bird", "Worm", nullptr);

} // namespace

class TestOvTranslationProperty final : public QObject
{
    Q_OBJECT

private slots:
    void labelsMayBeRecordedWhileStaticObjectsAreBuilt()
    {
        QCOMPARE(OvTranslationProperty::label("Early.Bird"), QStringLiteral("Worm"));
        QCOMPARE(Early, "Early.Bird");
    }

    void eachPathHasItsOwnLabel()
    {
        OvTranslationProperty::translate("A", "One", nullptr);
        OvTranslationProperty::translate("A.B", "Two", nullptr);
        OvTranslationProperty::translate("A.", "Empty component", nullptr);
        QCOMPARE(OvTranslationProperty::label("A"), QStringLiteral("One"));
        QCOMPARE(OvTranslationProperty::label("A.B"), QStringLiteral("Two"));
        QCOMPARE(OvTranslationProperty::label("A."), QStringLiteral("Empty component"));
    }

    void anUnknownPathHasAnEmptyLabel() { QCOMPARE(OvTranslationProperty::label("No.Such"), QString()); }

    void keysAreLatin1AndTextsUtf8()
    {
        OvTranslationProperty::translate("Gr\xf6\xdf"
                                         "e",
                                         "Gr\xc3\xb6\xc3\x9f"
                                         "e \xd0\x96",
                                         nullptr);
        QCOMPARE(OvTranslationProperty::label(QStringLiteral("Größe")), QStringLiteral("Größe Ж"));
    }

    void aContextStandsBeforeTheKey()
    {
        QCOMPARE(OvTranslationProperty::translate("Left", "Left side", "Enumeration.Side"), "Left");
        QCOMPARE(OvTranslationProperty::label("Enumeration.Side.Left"), QStringLiteral("Left side"));
        QCOMPARE(OvTranslationProperty::label("Left"), QString());
    }

    void aLaterLabelReplacesTheFirst()
    {
        OvTranslationProperty::translate("Replaced", "Old", nullptr);
        OvTranslationProperty::translate("Replaced", "New", nullptr);
        QCOMPARE(OvTranslationProperty::label("Replaced"), QStringLiteral("New"));
    }

    void aLabelIsReadInTheLanguageOfTheUser()
    {
        OvTranslationProperty::translate("Spoken",
                                         QT_TRANSLATE_NOOP("OvTranslationProperty", "Gr\xc3\xb6\xc3\x9f"
                                                                                    "e"),
                                         nullptr);
        class Shouting final : public QTranslator
        {
        public:
            QString translate(const char* inContext, const char* inText, const char*, int) const override
            {
                return qstrcmp(inContext, "OvTranslationProperty") == 0 ? QString::fromUtf8(inText) + '!'
                                                                        : QString();
            }
            bool isEmpty() const override { return false; }
        } translator;
        QCoreApplication::installTranslator(&translator);
        QCOMPARE(OvTranslationProperty::label("Spoken"), QString::fromUtf8("Größe!"));
        QCOMPARE(OvTranslationProperty::label("No.Such"), QString());
        QCoreApplication::removeTranslator(&translator);
        QCOMPARE(OvTranslationProperty::label("Spoken"), QString::fromUtf8("Größe"));
    }

    void nullKeyOrTextRecordsNothing()
    {
        QCOMPARE(OvTranslationProperty::translate(nullptr, "Text", nullptr), nullptr);
        QCOMPARE(OvTranslationProperty::translate("NoText", nullptr, nullptr), "NoText");
        QCOMPARE(OvTranslationProperty::label("NoText"), QString());
        QCOMPARE(OvTranslationProperty::label(QString()), QString());
    }

    void observersHearOfNewAndChangedLabelsOnce()
    {
        QStringList heard;
        {
            const QObject context;
            OvTranslationProperty::observeLabels(&context, [&](const QString& path) {
                heard.append(path + QLatin1Char('=') + OvTranslationProperty::label(path));
            });
            OvTranslationProperty::translate("Heard", "One", nullptr);
            OvTranslationProperty::translate("Heard", "One", nullptr);
            OvTranslationProperty::translate("Heard", "Two", nullptr);
            OvTranslationProperty::translate("Heard.Empty", "", nullptr);
        }
        OvTranslationProperty::translate("Heard", "Three", nullptr);
        QCOMPARE(heard, (QStringList{"Heard=One", "Heard=Two", "Heard.Empty="}));
    }
};

KY_TEST_MAIN(TestOvTranslationProperty)

#include "tst_OvTranslationProperty.moc"
