#include "KyScriptStudyOrder.h"

#include "KyScriptStudy.h"

#include <ovwebservice/DicomDirectoryEntry.h>

#include <algorithm>
#include <functional>
#include <vector>

namespace {

/// An element with its casts made once: a comparison then costs only that of the entries.
struct Element
{
    explicit Element(QObject* inObject)
        : object(inObject)
    {
        // Nearly all are studies and nothing derived from them, which is quicker to see than to cast.
        const bool isExactlyStudy = inObject && inObject->metaObject() == &KyScriptStudy::staticMetaObject;
        const auto* study = isExactlyStudy ? static_cast<const KyScriptStudy*>(inObject)
                                           : qobject_cast<const KyScriptStudy*>(inObject);
        isStudy = study;
        entry = study ? study->dde().get() : nullptr;
    }

    QObject* object;
    const Ovg::DicomDirectoryEntry* entry;
    bool isStudy;
};

using Elements = std::vector<Element>;

/// Studies in their own order, one without an entry before all others; then everything else, null included,
/// in the order of the pointers.
bool less(const Element& inA, const Element& inB)
{
    if (inA.entry && inB.entry)
        return *inA.entry < *inB.entry;
    if (inA.isStudy != inB.isStudy)
        return inA.isStudy;
    return inA.isStudy ? !inA.entry && inB.entry : std::less<QObject*>()(inA.object, inB.object);
}

/// What a walk puts out: elements of one list alone, and of pairs the one from A.
struct Wanted
{
    bool fromA;
    bool fromB;
    bool pairs;
};

/// Walks two lists in step. Lists often come in order, from get() or from another set operation, and to look
/// for that first would cost as much as the walk. So the walk itself finds out: what it takes, from whichever
/// list, must never go down. It stops with false when it does, and the output is worth nothing.
class Walk
{
public:
    Walk(const Elements& inA, const Elements& inB, Wanted inWanted, QObjectList& outObjects)
        : mA(inA)
        , mB(inB)
        , mWanted(inWanted)
        , mObjects(outObjects)
    {}

    bool run()
    {
        auto a = mA.begin(), b = mB.begin();
        bool lastInA = false, lastInB = false; // the lists from which the last element was taken
        while (a != mA.end() && b != mB.end()) {
            const bool isLess = less(*a, *b);
            const bool isGreater = !isLess && less(*b, *a);
            // One that follows an element of the other list alone was compared with that already.
            const bool goesDown = isGreater ? lastInB && less(*b, b[-1]) : lastInA && less(*a, a[-1]);
            if (goesDown)
                return false;
            if (isGreater ? mWanted.fromB : isLess ? mWanted.fromA : mWanted.pairs)
                mObjects.append(isGreater ? b->object : a->object);
            lastInA = !isGreater;
            lastInB = !isLess;
            a += lastInA;
            b += lastInB;
        }
        return finish(a, mA, lastInA, mWanted.fromA) && finish(b, mB, lastInB, mWanted.fromB);
    }

private:
    bool finish(Elements::const_iterator inFrom, const Elements& inList, bool inLastIsHere, bool inWanted)
    {
        const auto before = inLastIsHere && inFrom != inList.begin() ? inFrom - 1 : inFrom;
        if (!std::is_sorted(before, inList.end(), less))
            return false;
        if (inWanted)
            std::for_each(inFrom, inList.end(), [this](const Element& e) { mObjects.append(e.object); });
        return true;
    }

    const Elements& mA;
    const Elements& mB;
    const Wanted mWanted;
    QObjectList& mObjects;
};

QObjectList combine(const QObjectList& inA, const QObjectList& inB, Wanted inWanted)
{
    Elements a(inA.begin(), inA.end()), b(inB.begin(), inB.end());
    QObjectList objects;
    objects.reserve((inWanted.fromA ? inA.size() : 0) + (inWanted.fromB ? inB.size() : 0));
    if (Walk(a, b, inWanted, objects).run())
        return objects;

    std::stable_sort(a.begin(), a.end(), less);
    std::stable_sort(b.begin(), b.end(), less);
    objects.clear();
    Walk(a, b, inWanted, objects).run();
    return objects;
}

} // namespace

QObjectList KyScriptStudyOrder::unite(const QObjectList& inA, const QObjectList& inB)
{
    return combine(inA, inB, {.fromA = true, .fromB = true, .pairs = true});
}

QObjectList KyScriptStudyOrder::subtract(const QObjectList& inA, const QObjectList& inB)
{
    return combine(inA, inB, {.fromA = true, .fromB = false, .pairs = false});
}

QObjectList KyScriptStudyOrder::intersect(const QObjectList& inA, const QObjectList& inB)
{
    return combine(inA, inB, {.fromA = false, .fromB = false, .pairs = true});
}
