#include <support/KyTest.h>

#include <ovbase/OvStudyObject.h>

namespace Ovg {

// What it is does not matter to the study object.
class DicomDirectoryEntry
{};

} // namespace Ovg

class TestOvStudyObject final : public QObject
{
    Q_OBJECT

private slots:
    void flagsAreOffAtFirst()
    {
        const auto entry = std::make_shared<Ovg::DicomDirectoryEntry>();
        const RnHandle<OvStudyObject> study(new OvStudyObject(entry));
        QCOMPARE(study->dde(), entry);
        QVERIFY(!study->pinned());
        QVERIFY(!study->relevant);
    }

    void flagsAreGivenAtConstructionAndChangedLater()
    {
        const RnHandle<OvStudyObject> pinned(new OvStudyObject(nullptr, true));
        QVERIFY(pinned->pinned() && !pinned->relevant);
        const RnHandle<OvStudyObject> relevant(new OvStudyObject(nullptr, false, true));
        QVERIFY(!relevant->pinned() && relevant->relevant);
        pinned->setPinned(false);
        pinned->relevant = true;
        QVERIFY(!pinned->pinned() && pinned->relevant);
    }

    void aStudyWithoutEntryIsAllowed()
    {
        const RnHandle<OvStudyObject> study(new OvStudyObject(nullptr));
        QVERIFY(!study->dde());
    }

    void theEntryIsSharedUntilTheLastHandleGoes()
    {
        const auto entry = std::make_shared<Ovg::DicomDirectoryEntry>();
        const std::size_t before = RnHandable::liveCount();
        RnHandle<OvStudyObject> study(new OvStudyObject(entry));
        RnHandle<OvStudyObject> second = study;
        QCOMPARE(entry.use_count(), 2L);
        study.reset();
        QCOMPARE(entry.use_count(), 2L);
        second.reset();
        QCOMPARE(entry.use_count(), 1L);
        QCOMPARE(RnHandable::liveCount(), before);
    }
};

KY_TEST_MAIN(TestOvStudyObject)

#include "tst_OvStudyObject.moc"
