#include <kybase/KyBaseViewerGroup.h>
#include <kybase/KyContextToolBar.h>
#include <kybase/KyViewerManager.h>
#include <ovvolren/OvVolume.h>

#include <QSignalSpy>
#include <QTest>

namespace {

class VolumeViewer final : public KyBaseViewer
{
public:
    using KyBaseViewer::KyBaseViewer;

    OvVolume* volume(int inIndex) override { return inIndex == 0 ? mVolume.get() : nullptr; }

private:
    const RnHandle<OvVolume> mVolume{new OvVolume};
};

RnHandle<KyBaseViewer> openViewer(Ky::ViewerType inType = Ky::ViewerTypeSlice)
{
    return new VolumeViewer(inType);
}

/// A manager with a place that no viewer has taken.
class ManagerWithAnEmptyPlace final : public KyViewerManager
{
public:
    int numViewers() const override { return KyViewerManager::numViewers() + 1; }
    KyBaseViewer* viewer(int inIndex) const override { return KyViewerManager::viewer(inIndex - 1); }
};

constexpr auto Layout = KyBaseViewerGroup::ActiveLayout;

} // namespace

class tst_KyViewers : public QObject
{
    Q_OBJECT

private slots:
    void withoutAManagerNothingIsOpen();
    void aPlainViewerAnswersNeutrally();
    void viewersStandInTheOrderOfTheirMaking();
    void aClosedViewerLeavesItsPlace();
    void anIndexOutsideGivesNull();
    void noViewerIsActiveAtFirst();
    void theActiveViewerCanBeSetAndTakenBack();
    void aViewerOfNoManagerCannotBecomeActive();
    void closingTheActiveViewerLeavesNoneActive();
    void closingAnotherViewerKeepsTheActiveOne();
    void viewersOutliveTheirManager();
    void viewersAreFoundById();
    void theLayoutGroupHoldsAllViewersInOrder();
    void groupNumber7IsTheLayout();
    void aGroupOfOneKindLeavesTheOthersOut();
    void aSingleViewerIsAGroupByItself();
    void anUnknownGroupIsEmpty();
    void aGroupWithoutAManagerIsEmpty();
    void aGroupPassesOverEmptyPlaces();
    void theManagerTellsOfViewers();
    void theManagerTellsOfTheActiveViewerOnce();
    void closingTheActiveViewerIsTold();
    void aDisplayHintIsKeptAndToldOnce();
};

void tst_KyViewers::withoutAManagerNothingIsOpen()
{
    QCOMPARE(KyViewerManager::getInstance(), nullptr);
    const auto viewer = openViewer();
    QVERIFY(viewer->volume(0));
}

void tst_KyViewers::aPlainViewerAnswersNeutrally()
{
    const RnHandle<KyBaseViewer> viewer([] {
        class Plain final : public KyBaseViewer
        {};
        return new Plain;
    }());
    QCOMPARE(viewer->volume(0), nullptr);
    QCOMPARE(viewer->viewerType(), Ky::ViewerTypeAny);
    QCOMPARE(viewer->viewSubType(), 0);
    QCOMPARE(viewer->conditionSource(), nullptr);
    QCOMPARE(viewer->protocolDisplaySetId(), std::string());
    QCOMPARE(viewer->imageSeries(0), nullptr);
    QCOMPARE(viewer->slice(0), nullptr);
    QCOMPARE(viewer->fusionWeight(), 0.0F);
    QCOMPARE(viewer->widget(), nullptr);
    QCOMPARE(viewer->contextToolBar(), nullptr);
}

void tst_KyViewers::viewersStandInTheOrderOfTheirMaking()
{
    const KyViewerManager manager;
    QCOMPARE(KyViewerManager::getInstance(), &manager);
    QCOMPARE(manager.numViewers(), 0);
    const auto a = openViewer();
    const auto b = openViewer();
    QCOMPARE(manager.numViewers(), 2);
    QCOMPARE(manager.viewer(0), a.get());
    QCOMPARE(manager.viewer(1), b.get());
}

void tst_KyViewers::aClosedViewerLeavesItsPlace()
{
    const KyViewerManager manager;
    auto a = openViewer();
    const auto b = openViewer();
    a.reset();
    QCOMPARE(manager.numViewers(), 1);
    QCOMPARE(manager.viewer(0), b.get());
}

void tst_KyViewers::anIndexOutsideGivesNull()
{
    const KyViewerManager manager;
    const auto a = openViewer();
    QCOMPARE(manager.viewer(-1), nullptr);
    QCOMPARE(manager.viewer(1), nullptr);
}

void tst_KyViewers::noViewerIsActiveAtFirst()
{
    const KyViewerManager manager;
    const auto a = openViewer();
    QCOMPARE(manager.activeViewer(), nullptr);
}

void tst_KyViewers::theActiveViewerCanBeSetAndTakenBack()
{
    KyViewerManager manager;
    const auto a = openViewer();
    const auto b = openViewer();
    manager.setActiveViewer(b.get());
    QCOMPARE(manager.activeViewer(), b.get());
    manager.setActiveViewer(a.get());
    QCOMPARE(manager.activeViewer(), a.get());
    manager.setActiveViewer(nullptr);
    QCOMPARE(manager.activeViewer(), nullptr);
}

void tst_KyViewers::aViewerOfNoManagerCannotBecomeActive()
{
    const auto stranger = openViewer();
    KyViewerManager manager;
    const auto own = openViewer();
    manager.setActiveViewer(own.get());
    manager.setActiveViewer(stranger.get());
    QCOMPARE(manager.activeViewer(), own.get());
}

void tst_KyViewers::closingTheActiveViewerLeavesNoneActive()
{
    KyViewerManager manager;
    auto a = openViewer();
    const auto b = openViewer();
    manager.setActiveViewer(a.get());
    a.reset();
    QCOMPARE(manager.activeViewer(), nullptr);
}

void tst_KyViewers::closingAnotherViewerKeepsTheActiveOne()
{
    KyViewerManager manager;
    const auto a = openViewer();
    auto b = openViewer();
    manager.setActiveViewer(a.get());
    b.reset();
    QCOMPARE(manager.activeViewer(), a.get());
}

void tst_KyViewers::viewersOutliveTheirManager()
{
    auto manager = std::make_unique<KyViewerManager>();
    const auto a = openViewer();
    manager.reset();
    QCOMPARE(KyViewerManager::getInstance(), nullptr);
    const KyViewerManager next;
    QCOMPARE(next.numViewers(), 0);
}

void tst_KyViewers::viewersAreFoundById()
{
    const auto a = openViewer();
    QCOMPARE(dynamic_cast<KyBaseViewer*>(OvInterface::instanceWithUID(a->uniqueID())), a.get());
}

void tst_KyViewers::theLayoutGroupHoldsAllViewersInOrder()
{
    const KyViewerManager manager;
    const auto a = openViewer(Ky::ViewerTypeSlice);
    const auto b = openViewer(Ky::ViewerTypeVolRen);
    const KyBaseViewerGroup group(nullptr, Layout, Ky::ViewerTypeAny);
    QCOMPARE(group.size(), std::size_t(2));
    QCOMPARE(group[0], a.get());
    QCOMPARE(group[1], b.get());
    const std::vector<KyBaseViewer*> seen(group.begin(), group.end());
    QVERIFY((seen == std::vector<KyBaseViewer*>{a.get(), b.get()}));
}

void tst_KyViewers::groupNumber7IsTheLayout()
{
    const KyViewerManager manager;
    const auto a = openViewer();
    QCOMPARE(KyBaseViewerGroup(nullptr, KyBaseViewerGroup::GroupType(7), Ky::ViewerType(0)).size(),
             std::size_t(1));
}

void tst_KyViewers::aGroupOfOneKindLeavesTheOthersOut()
{
    const KyViewerManager manager;
    const auto a = openViewer(Ky::ViewerTypeSlice);
    const auto b = openViewer(Ky::ViewerTypeVolRen);
    const KyBaseViewerGroup group(nullptr, Layout, Ky::ViewerTypeVolRen);
    QCOMPARE(group.size(), std::size_t(1));
    QCOMPARE(group[0], b.get());
}

void tst_KyViewers::aSingleViewerIsAGroupByItself()
{
    const KyViewerManager manager;
    const auto a = openViewer();
    const auto b = openViewer();
    const KyBaseViewerGroup group(b.get(), KyBaseViewerGroup::SingleViewer, Ky::ViewerTypeAny);
    QCOMPARE(group.size(), std::size_t(1));
    QCOMPARE(group[0], b.get());
}

void tst_KyViewers::anUnknownGroupIsEmpty()
{
    const KyViewerManager manager;
    const auto a = openViewer();
    QCOMPARE(KyBaseViewerGroup(a.get(), KyBaseViewerGroup::GroupType(5), Ky::ViewerTypeAny).size(),
             std::size_t(0));
}

void tst_KyViewers::aGroupWithoutAManagerIsEmpty()
{
    const auto a = openViewer();
    QCOMPARE(KyBaseViewerGroup(nullptr, Layout, Ky::ViewerTypeAny).size(), std::size_t(0));
}

void tst_KyViewers::aGroupPassesOverEmptyPlaces()
{
    const ManagerWithAnEmptyPlace manager;
    const auto a = openViewer();
    QCOMPARE(manager.numViewers(), 2);
    QCOMPARE(manager.viewer(0), nullptr);
    const KyBaseViewerGroup layout(nullptr, Layout, Ky::ViewerTypeAny);
    QCOMPARE(layout.size(), std::size_t(1));
    QCOMPARE(layout[0], a.get());
    QCOMPARE(KyBaseViewerGroup(nullptr, KyBaseViewerGroup::SingleViewer, Ky::ViewerTypeSlice).size(),
             std::size_t(0));
}

void tst_KyViewers::theManagerTellsOfViewers()
{
    const KyViewerManager manager;
    QSignalSpy changes(&manager, &KyViewerManager::viewersChanged);
    auto a = openViewer();
    QCOMPARE(changes.size(), 1);
    a.reset();
    QCOMPARE(changes.size(), 2);
}

void tst_KyViewers::theManagerTellsOfTheActiveViewerOnce()
{
    KyViewerManager manager;
    const auto a = openViewer();
    QList<KyBaseViewer*> told;
    connect(&manager, &KyViewerManager::activeViewerChanged, &manager,
            [&](KyBaseViewer* inViewer) { told.append(inViewer); });
    manager.setActiveViewer(a.get());
    manager.setActiveViewer(a.get());
    manager.setActiveViewer(nullptr);
    QCOMPARE(told, (QList<KyBaseViewer*>{a.get(), nullptr}));
}

void tst_KyViewers::closingTheActiveViewerIsTold()
{
    KyViewerManager manager;
    auto a = openViewer();
    manager.setActiveViewer(a.get());
    QList<KyBaseViewer*> told;
    connect(&manager, &KyViewerManager::activeViewerChanged, &manager,
            [&](KyBaseViewer* inViewer) { told.append(inViewer); });
    a.reset();
    QCOMPARE(told, QList<KyBaseViewer*>{nullptr});
}

void tst_KyViewers::aDisplayHintIsKeptAndToldOnce()
{
    KyContextToolBar bar;
    QSignalSpy hints(&bar, &KyContextToolBar::displayHintChanged);
    QCOMPARE(bar.displayHint(), QString());
    bar.setDisplayHint("Measure");
    bar.setDisplayHint("Measure");
    QCOMPARE(bar.displayHint(), "Measure");
    bar.setDisplayHint(QString());
    QCOMPARE(bar.displayHint(), QString());
    QCOMPARE(hints.size(), 2);
    QCOMPARE(hints.at(0).constFirst().toString(), "Measure");
}

QTEST_APPLESS_MAIN(tst_KyViewers)
#include "tst_KyViewers.moc"
