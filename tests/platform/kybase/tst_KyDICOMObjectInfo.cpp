#include <support/KyTest.h>

#include <kybase/KyDICOMObjectInfo.h>
#include <kybase/KyDICOMObjectInterface.h>

using TagKey = KyDICOMObjectInfo::TagKey;

class TestKyDICOMObjectInfo final : public QObject
{
    Q_OBJECT

private slots:
    void aNewKeyNamesNothing()
    {
        QVERIFY(!TagKey().isValid());
        QCOMPARE(TagKey().serialize(), QString());
    }

    void namesAreRead_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("canonical");
        const auto row = [](const char* name, const char* canonical) {
            QTest::newRow(name) << name << canonical;
        };
        row("DICOM.StudyInstanceUID", "DICOM.StudyInstanceUID");
        row("DICOM.(0010,0010)", "DICOM.PatientName");
        row("DICOM.(0029,\"ACME\",10)", "DICOM.(0029,\"ACME\",10)");
        row("DICOM.RequestAttributesSequence[0].ScheduledProcedureStepID",
            "DICOM.RequestAttributesSequence.ScheduledProcedureStepID");
        row("DICOM.StudyStatusID", "DICOM.StudyStatusID");
    }
    void namesAreRead()
    {
        QFETCH(QString, name);
        QFETCH(QString, canonical);
        TagKey key;
        bool ok = false;
        key.deserialize(name, &ok);
        QVERIFY(ok);
        QVERIFY(key.isValid());
        QCOMPARE(key.serialize(), canonical);
        TagKey again;
        again.deserialize(canonical, nullptr);
        QCOMPARE(again, key);
    }

    void otherNamesClearTheKey_data()
    {
        QTest::addColumn<QString>("name");
        for (const char* name :
             {"", "DICOM", "DICOM.", "StudyInstanceUID", "dicom.StudyInstanceUID", "Dicom.StudyInstanceUID",
              "DICOM.studyInstanceUID", "DICOM.NoSuchKeyword", "DICOM.DICOM.StudyInstanceUID",
              "worklist.Status", " DICOM.StudyInstanceUID", "DICOM.(0010,001)", "DICOM. StudyInstanceUID"})
            QTest::newRow(qPrintable(QLatin1Char('<') + QLatin1String(name) + QLatin1Char('>'))) << name;
    }
    void otherNamesClearTheKey()
    {
        QFETCH(QString, name);
        TagKey key;
        key.deserialize("DICOM.PatientID", nullptr);
        QVERIFY(key.isValid());
        bool ok = true;
        key.deserialize(name, &ok);
        QVERIFY(!ok);
        QCOMPARE(key, TagKey());
    }

    void withoutConditionsTheObjectAnswers()
    {
        const auto object = std::make_shared<TwoAnswers>();
        const KyDICOMObjectInfo::Dictionary dictionary(nullptr);
        QCOMPARE(dictionary.evaluate(patient(), object, nullptr, false), "own");
        QVERIFY(!dictionary.evaluate(study(), object, nullptr, false).isValid());
        QCOMPARE(dictionary.evaluate(study(), object, nullptr, true), "");
    }

    void withoutAnObjectThereIsNothing()
    {
        const KyDICOMObjectInfo::Dictionary dictionary(nullptr);
        QVERIFY(!dictionary.evaluate(patient(), nullptr, nullptr, false).isValid());
        QCOMPARE(dictionary.evaluate(patient(), nullptr, nullptr, true), "");
    }

    void aConditionReplacesTheValue()
    {
        auto conditions = std::make_shared<KyDICOMObjectInfo::ConditionDictionary>();
        conditions->setValue(study(), 1);
        conditions->setValue(study(), 2);
        const KyDICOMObjectInfo::Dictionary dictionary(conditions);
        const auto object = std::make_shared<TwoAnswers>();
        QCOMPARE(dictionary.evaluate(study(), object, nullptr, false), 2);
        QCOMPARE(dictionary.evaluate(study(), nullptr, nullptr, false), 2);
        QCOMPARE(dictionary.evaluate(patient(), object, nullptr, false), "own");
        QVERIFY(!conditions->value(patient()));
    }

    void aConditionMayHoldForOneVolume()
    {
        class OfVolume final : public KyDICOMObjectInterface
        {
        public:
            explicit OfVolume(const OvVolume* inVolume)
                : mVolume(inVolume)
            {}
            const OvVolume* volume() const override { return mVolume; }
            QVariant tag(const TagKey&, KyDICOMObjectInfo::Warnings*, const QVariant&) const override
            {
                return "own";
            }

        private:
            const OvVolume* const mVolume;
        };
        // Only compared, never used.
        int places[2];
        const auto* first = reinterpret_cast<const OvVolume*>(&places[0]);
        const auto* second = reinterpret_cast<const OvVolume*>(&places[1]);
        auto conditions = std::make_shared<KyDICOMObjectInfo::ConditionDictionary>();
        const auto valueOf = [&](const OvVolume* inVolume) {
            return KyDICOMObjectInfo::Dictionary(conditions)
                .evaluate(study(), std::make_shared<OfVolume>(inVolume), nullptr, false)
                .toString();
        };
        conditions->setValue(study(), "a", first);
        QCOMPARE(valueOf(first) + valueOf(second) + valueOf(nullptr), "aownown");
        conditions->setValue(study(), "b", second);
        QCOMPARE(valueOf(first) + valueOf(second) + valueOf(nullptr), "abown");
        conditions->setValue(study(), "c", first);
        QCOMPARE(valueOf(first) + valueOf(second) + valueOf(nullptr), "cbown");
        conditions->setValue(study(), "all");
        QCOMPARE(valueOf(first) + valueOf(second) + valueOf(nullptr), "allallall");
        conditions->setValue(study(), QVariant(), first);
        QCOMPARE(valueOf(first) + valueOf(second) + valueOf(nullptr), "allall");
    }

    void anInvalidConditionHidesTheValue()
    {
        auto conditions = std::make_shared<KyDICOMObjectInfo::ConditionDictionary>();
        conditions->setValue(patient(), QVariant());
        const KyDICOMObjectInfo::Dictionary dictionary(conditions);
        const auto object = std::make_shared<TwoAnswers>();
        QVERIFY(!dictionary.evaluate(patient(), object, nullptr, false).isValid());
        QCOMPARE(dictionary.evaluate(patient(), object, nullptr, true), "");
    }

    void aPlaneAcrossImagesHasWhatTheyShare()
    {
        auto conditions = std::make_shared<KyDICOMObjectInfo::ConditionDictionary>();
        QVERIFY(!conditions->sharedOnly());
        conditions->setSharedOnly(true);
        const auto object = std::make_shared<TwoAnswers>();
        QCOMPARE(KyDICOMObjectInfo::Dictionary(conditions).evaluate(patient(), object, nullptr, false),
                 "shared");
    }

    void anObjectByItselfSharesItsValues()
    {
        class Single final : public KyDICOMObjectInterface
        {
        public:
            QVariant tag(const TagKey&, KyDICOMObjectInfo::Warnings*, const QVariant&) const override
            {
                return 5;
            }
        };
        QCOMPARE(Single().sharedTag(patient(), nullptr, {}), 5);
    }

private:
    /// Has a patient's name, another one where all images are asked, and nothing else.
    class TwoAnswers final : public KyDICOMObjectInterface
    {
    public:
        QVariant tag(const TagKey& inKey, KyDICOMObjectInfo::Warnings*,
                     const QVariant& inDefault) const override
        {
            return inKey == patient() ? QVariant("own") : inDefault;
        }
        QVariant sharedTag(const TagKey&, KyDICOMObjectInfo::Warnings*, const QVariant&) const override
        {
            return "shared";
        }
    };

    static TagKey keyOf(const QString& inName)
    {
        TagKey key;
        key.deserialize(inName, nullptr);
        return key;
    }
    static TagKey patient() { return keyOf("DICOM.PatientName"); }
    static TagKey study() { return keyOf("DICOM.StudyID"); }
};

KY_TEST_MAIN(TestKyDICOMObjectInfo)

#include "tst_KyDICOMObjectInfo.moc"
