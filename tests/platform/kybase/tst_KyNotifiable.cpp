#include <support/KyTest.h>
#include <support/LogCapture.h>

#include <kybase/KyNotifiable.h>
#include <kybase/KySessionContext.h>
#include <ovbase/OvProperty.h>

#include <functional>
#include <stdexcept>

Q_DECLARE_METATYPE(KyNotification)

namespace {

/// Notes the codes that it hears, and does something of the test's at each.
class Receiver final : public KyNotifiable
{
public:
    void notified(const KyNotification& inNotification) override
    {
        heard.append(inNotification.code);
        if (action)
            action(inNotification);
    }

    QList<int> heard;
    std::function<void(const KyNotification&)> action;
};

class SessionReceiver final : public KyNotifiableContextSensitive
{
public:
    using KyNotifiableContextSensitive::KyNotifiableContextSensitive;
    void notified(const KyNotification& inNotification) override
    {
        heard.append(inNotification.session.value);
    }

    QList<int> heard;
};

/// Names its wishes when it is asked.
class AskedReceiver final : public KyNotifiable
{
public:
    explicit AskedReceiver(QList<int> inCodes)
        : mCodes(std::move(inCodes))
    {}
    void addNotifications() override
    {
        ++questions;
        if (action)
            action();
        for (const int code : mCodes)
            KyNotifiables::getInstance()->addNotification(this, KyNotification(code));
    }
    void notified(const KyNotification& inNotification) override { heard.append(inNotification.code); }

    int questions = 0;
    QList<int> heard;
    std::function<void()> action;

private:
    const QList<int> mCodes;
};

KyNotification coded(int inCode)
{
    return KyNotification(inCode);
}

KyNotification ofSession(int inSession)
{
    return KyNotification(1, 0, 0, nullptr, OvSessionContextID{inSession});
}

} // namespace

class tst_KyNotifiable : public QObject
{
    Q_OBJECT

private slots:
    void init() { mAll = std::make_unique<KyNotifiables>(); }
    void cleanup() { mAll.reset(); }

    void withoutAListNobodyHears();
    void theNewestListIsAsked();
    void eventsHaveTheirCodes();
    void onlyWantedCodesAreHeard();
    void aWishCoversWhatItsFieldsSay_data();
    void aWishCoversWhatItsFieldsSay();
    void eachWishIsHeardByItself();
    void receiversHearInTheOrderOfTheirWishes();
    void aReceiverOfOneSessionHearsOfThatOne();
    void aReceiverWithoutASessionHearsOfAll();
    void wishesAreTakenBack();
    void wishesEndWithTheirReceiver();
    void receiversOutliveTheList();
    void aReceiverMayEndItselfAndOthers();
    void aReceiverMayNotifyAgain();
    void theListMayEndDuringANotification();
    void whatAReceiverThrowsIsLogged();
    void aReceiverThatDoesNothingIsHarmless();
    void nullIsNoReceiver();
    void aReceiverIsAskedBeforeItsFirstNotification();
    void aReceiverThatNamesNothingIsAskedAgain();
    void aReceiverIsAskedByEachList();
    void aReceiverThatHasNamedSomethingIsNotAsked();
    void aReceiverMayEndAnotherOneWhenItIsAsked();
    void aReceiverMayMakeAnotherOneWhenItIsAsked();
    void aReceiverIsNotAskedAgainAfterItsWishesWereTakenBack();

private:
    std::unique_ptr<KyNotifiables> mAll;
};

void tst_KyNotifiable::withoutAListNobodyHears()
{
    Receiver receiver;
    mAll->addNotification(&receiver, coded(1));
    mAll.reset();
    QCOMPARE(KyNotifiables::getInstance(), nullptr);
    KyNotifiable::notify(coded(1));
    QCOMPARE(receiver.heard, QList<int>());
}

void tst_KyNotifiable::theNewestListIsAsked()
{
    Receiver older, newer;
    mAll->addNotification(&older, coded(1));
    {
        KyNotifiables second;
        QCOMPARE(KyNotifiables::getInstance(), &second);
        second.addNotification(&newer, coded(1));
        KyNotifiable::notify(coded(1));
    }
    QCOMPARE(older.heard, QList<int>());
    QCOMPARE(newer.heard, QList<int>{1});
}

void tst_KyNotifiable::eventsHaveTheirCodes()
{
    QCOMPARE(KyNotification::SessionClosed, 1);
    QCOMPARE(KyNotification::PatientChanged, 112);
    QCOMPARE(KyNotification::PropertyChanged, 102);
    const KyNotification plain;
    QCOMPARE(plain.code, 0);
    QCOMPARE(plain.firstWord, std::uintptr_t(0));
    QCOMPARE(plain.secondWord, std::uintptr_t(0));
    QCOMPARE(plain.property, nullptr);
    QCOMPARE(plain.session, OvSessionContextID());
}

void tst_KyNotifiable::onlyWantedCodesAreHeard()
{
    Receiver receiver;
    mAll->addNotification(&receiver, coded(1));
    mAll->addNotification(&receiver, coded(112));
    for (const int code : {0, 1, 2, 102, 112, -1})
        KyNotifiable::notify(coded(code));
    QCOMPARE(receiver.heard, (QList<int>{1, 112}));
}

void tst_KyNotifiable::aWishCoversWhatItsFieldsSay_data()
{
    static const OvProperty<int> a("A"), b("B");
    QTest::addColumn<KyNotification>("wanted");
    QTest::addColumn<KyNotification>("sent");
    QTest::addColumn<bool>("isCovered");
    using N = KyNotification;
    const N full(7, 1, 2, &a, {3});
    const auto row = [&](const char* name, N wanted, N sent, bool covered) {
        QTest::newRow(name) << wanted << sent << covered;
    };
    row("code alone covers all of it", N(7), full, true);
    row("another code", N(8), full, false);
    row("no code covers no other", N(), full, false);
    row("itself", full, full, true);
    row("first word", N(7, 1), full, true);
    row("another first word", N(7, 2), full, false);
    row("second word", N(7, 0, 2), full, true);
    row("another second word", N(7, 0, 1), full, false);
    row("property", N(7, 0, 0, &a), full, true);
    row("another property", N(7, 0, 0, &b), full, false);
    row("a property where none was sent", N(7, 0, 0, &b), N(7), false);
    row("session", N(7, 0, 0, nullptr, {3}), full, true);
    row("another session", N(7, 0, 0, nullptr, {4}), full, false);
    row("sent to no session in particular", N(7, 0, 0, nullptr, {4}), N(7), true);
}

void tst_KyNotifiable::aWishCoversWhatItsFieldsSay()
{
    QFETCH(KyNotification, wanted);
    QFETCH(KyNotification, sent);
    QFETCH(bool, isCovered);
    QCOMPARE(wanted.covers(sent), isCovered);
    Receiver receiver;
    mAll->addNotification(&receiver, wanted);
    KyNotifiable::notify(sent);
    QCOMPARE(receiver.heard.size(), isCovered ? 1 : 0);
}

void tst_KyNotifiable::eachWishIsHeardByItself()
{
    Receiver receiver;
    mAll->addNotification(&receiver, coded(1));
    mAll->addNotification(&receiver, coded(1));
    KyNotifiable::notify(coded(1));
    QCOMPARE(receiver.heard, (QList<int>{1, 1}));
}

void tst_KyNotifiable::receiversHearInTheOrderOfTheirWishes()
{
    QString order;
    Receiver a, b;
    a.action = [&](const KyNotification&) { order += 'a'; };
    b.action = [&](const KyNotification&) { order += 'b'; };
    mAll->addNotification(&b, coded(1));
    mAll->addNotification(&a, coded(1));
    KyNotifiable::notify(coded(1));
    QCOMPARE(order, QStringLiteral("ba"));
}

void tst_KyNotifiable::aReceiverOfOneSessionHearsOfThatOne()
{
    auto session = std::make_shared<KySessionContext>();
    const int own = session->id().value;
    SessionReceiver receiver(session);
    QCOMPARE(session.use_count(), 1);
    mAll->addNotification(&receiver, coded(1));
    for (const int sent : {own, own + 1, 0})
        KyNotifiable::notify(ofSession(sent));
    QCOMPARE(receiver.heard, (QList<int>{own, 0}));
}

void tst_KyNotifiable::aReceiverWithoutASessionHearsOfAll()
{
    SessionReceiver receiver(nullptr);
    mAll->addNotification(&receiver, coded(1));
    for (const int sent : {1, 2, 0})
        KyNotifiable::notify(ofSession(sent));
    QCOMPARE(receiver.heard, (QList<int>{1, 2, 0}));
}

void tst_KyNotifiable::wishesAreTakenBack()
{
    Receiver receiver, other;
    mAll->addNotification(&receiver, coded(1));
    mAll->addNotification(&receiver, coded(2));
    mAll->addNotification(&other, coded(1));
    mAll->removeNotifications(&receiver);
    KyNotifiable::notify(coded(1));
    KyNotifiable::notify(coded(2));
    QCOMPARE(receiver.heard, QList<int>());
    QCOMPARE(other.heard, QList<int>{1});
}

void tst_KyNotifiable::wishesEndWithTheirReceiver()
{
    auto receiver = std::make_unique<Receiver>();
    int count = 0;
    receiver->action = [&](const KyNotification&) { ++count; };
    mAll->addNotification(receiver.get(), coded(1));
    KyNotifiable::notify(coded(1));
    receiver.reset();
    KyNotifiable::notify(coded(1));
    QCOMPARE(count, 1);
}

void tst_KyNotifiable::receiversOutliveTheList()
{
    Receiver receiver;
    mAll->addNotification(&receiver, coded(1));
    mAll = std::make_unique<KyNotifiables>();
    KyNotifiable::notify(coded(1));
    QCOMPARE(receiver.heard, QList<int>());
    mAll->addNotification(&receiver, coded(1));
    KyNotifiable::notify(coded(1));
    QCOMPARE(receiver.heard, QList<int>{1});
}

void tst_KyNotifiable::aReceiverMayEndItselfAndOthers()
{
    auto first = std::make_unique<Receiver>(), second = std::make_unique<Receiver>();
    bool secondHeard = false;
    first->action = [&](const KyNotification&) {
        second.reset();
        first.reset();
    };
    second->action = [&](const KyNotification&) { secondHeard = true; };
    mAll->addNotification(first.get(), coded(1));
    mAll->addNotification(second.get(), coded(1));
    KyNotifiable::notify(coded(1));
    QVERIFY(!first && !second && !secondHeard);
}

void tst_KyNotifiable::aReceiverMayNotifyAgain()
{
    Receiver receiver;
    receiver.action = [](const KyNotification& heard) {
        if (heard.code < 3)
            KyNotifiable::notify(coded(heard.code + 1));
    };
    for (const int code : {1, 2, 3})
        mAll->addNotification(&receiver, coded(code));
    KyNotifiable::notify(coded(1));
    QCOMPARE(receiver.heard, (QList<int>{1, 2, 3}));
}

void tst_KyNotifiable::theListMayEndDuringANotification()
{
    Receiver first, second;
    first.action = [&](const KyNotification&) { mAll.reset(); };
    mAll->addNotification(&first, coded(1));
    mAll->addNotification(&second, coded(1));
    KyNotifiable::notify(coded(1));
    QCOMPARE(first.heard, QList<int>{1});
    QCOMPARE(second.heard, QList<int>{1});
}

void tst_KyNotifiable::whatAReceiverThrowsIsLogged()
{
    LogCapture log;
    Receiver first, second;
    first.action = [](const KyNotification&) { throw std::runtime_error("no"); };
    mAll->addNotification(&first, coded(1));
    mAll->addNotification(&second, coded(1));
    KyNotifiable::notify(coded(1));
    QCOMPARE(second.heard, QList<int>{1});
    QCOMPARE(log.take(), QStringList{"3|OvObservers|an observer failed: no"});
}

void tst_KyNotifiable::aReceiverThatDoesNothingIsHarmless()
{
    KyNotifiable receiver;
    mAll->addNotification(&receiver, coded(1));
    KyNotifiable::notify(coded(1));
}

void tst_KyNotifiable::nullIsNoReceiver()
{
    mAll->addNotification(nullptr, coded(1));
    mAll->removeNotifications(nullptr);
    KyNotifiable::notify(coded(1));
}

void tst_KyNotifiable::aReceiverIsAskedBeforeItsFirstNotification()
{
    AskedReceiver receiver({1, 112});
    QCOMPARE(receiver.questions, 0);
    for (const int code : {102, 112, 1})
        KyNotifiable::notify(coded(code));
    QCOMPARE(receiver.heard, (QList<int>{112, 1}));
    QCOMPARE(receiver.questions, 1);
}

void tst_KyNotifiable::aReceiverThatNamesNothingIsAskedAgain()
{
    AskedReceiver receiver({});
    KyNotifiable::notify(coded(1));
    KyNotifiable::notify(coded(1));
    QCOMPARE(receiver.questions, 2);
    QCOMPARE(receiver.heard, QList<int>());
}

void tst_KyNotifiable::aReceiverIsAskedByEachList()
{
    AskedReceiver receiver({1});
    KyNotifiable::notify(coded(1));
    mAll.reset();
    KyNotifiable::notify(coded(1));
    mAll = std::make_unique<KyNotifiables>();
    KyNotifiable::notify(coded(1));
    QCOMPARE(receiver.heard, (QList<int>{1, 1}));
    QCOMPARE(receiver.questions, 2);
}

void tst_KyNotifiable::aReceiverThatHasNamedSomethingIsNotAsked()
{
    AskedReceiver receiver({1});
    mAll->addNotification(&receiver, coded(2));
    KyNotifiable::notify(coded(2));
    QCOMPARE(receiver.heard, QList<int>{2});
    QCOMPARE(receiver.questions, 0);
}

void tst_KyNotifiable::aReceiverMayEndAnotherOneWhenItIsAsked()
{
    AskedReceiver first({1});
    auto second = std::make_unique<AskedReceiver>(QList<int>{1});
    first.action = [&] { second.reset(); };
    KyNotifiable::notify(coded(1));
    QVERIFY(!second);
    QCOMPARE(first.heard, QList<int>{1});
}

void tst_KyNotifiable::aReceiverMayMakeAnotherOneWhenItIsAsked()
{
    AskedReceiver first({1});
    std::unique_ptr<AskedReceiver> second;
    first.action = [&] { second = std::make_unique<AskedReceiver>(QList<int>{1}); };
    KyNotifiable::notify(coded(1));
    QCOMPARE(second->heard, QList<int>());
    KyNotifiable::notify(coded(1));
    QCOMPARE(second->heard, QList<int>{1});
}

void tst_KyNotifiable::aReceiverIsNotAskedAgainAfterItsWishesWereTakenBack()
{
    AskedReceiver receiver({1});
    KyNotifiable::notify(coded(1));
    mAll->removeNotifications(&receiver);
    KyNotifiable::notify(coded(1));
    QCOMPARE(receiver.heard, QList<int>{1});
    QCOMPARE(receiver.questions, 1);
}

KY_TEST_MAIN(tst_KyNotifiable)
#include "tst_KyNotifiable.moc"
