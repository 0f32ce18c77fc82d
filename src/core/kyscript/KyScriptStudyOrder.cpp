#include "KyScriptStudyOrder.h"

#include "KyScriptStudy.h"

#include <algorithm>
#include <vector>

namespace {

/// An element with its cast made once: a comparison then costs no look at meta-objects.
struct Element
{
    const KyScriptStudy* study;
    QObject* object;
};

using Elements = std::vector<Element>;

/// Studies in their own order, then everything else, null included, in the order of the pointers.
bool less(const Element& inA, const Element& inB)
{
    if (inA.study && inB.study)
        return *inA.study < *inB.study;
    if (inA.study || inB.study)
        return inA.study;
    return std::less<QObject*>()(inA.object, inB.object);
}

Elements sorted(const QObjectList& inList)
{
    Elements elements;
    elements.reserve(size_t(inList.size()));
    for (QObject* object : inList)
        elements.push_back({qobject_cast<const KyScriptStudy*>(object), object});
    if (!std::is_sorted(elements.begin(), elements.end(), less)) // lists often come from get(), in order
        std::stable_sort(elements.begin(), elements.end(), less);
    return elements;
}

/// Takes elements into a result list.
class Output
{
public:
    using iterator_category = std::output_iterator_tag;
    using value_type = void;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = void;

    explicit Output(QObjectList& ioList)
        : mList(&ioList)
    {
    }
    Output& operator=(const Element& inElement)
    {
        mList->append(inElement.object);
        return *this;
    }
    Output& operator*() { return *this; }
    Output& operator++() { return *this; }
    Output operator++(int) { return *this; }

private:
    QObjectList* mList;
};

} // namespace

QObjectList KyScriptStudyOrder::unite(const QObjectList& inA, const QObjectList& inB)
{
    const Elements a = sorted(inA), b = sorted(inB);
    QObjectList result;
    result.reserve(inA.size() + inB.size());
    std::set_union(a.begin(), a.end(), b.begin(), b.end(), Output(result), less);
    return result;
}

QObjectList KyScriptStudyOrder::subtract(const QObjectList& inA, const QObjectList& inB)
{
    const Elements a = sorted(inA), b = sorted(inB);
    QObjectList result;
    result.reserve(inA.size());
    std::set_difference(a.begin(), a.end(), b.begin(), b.end(), Output(result), less);
    return result;
}

QObjectList KyScriptStudyOrder::intersect(const QObjectList& inA, const QObjectList& inB)
{
    const Elements a = sorted(inA), b = sorted(inB);
    QObjectList result;
    std::set_intersection(a.begin(), a.end(), b.begin(), b.end(), Output(result), less);
    return result;
}
