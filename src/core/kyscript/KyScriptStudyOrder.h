#pragma once

#include <QtCore/QObject>

/// Set arithmetic on lists of study objects, see KyScriptStudyList.
class KyScriptStudyOrder
{
public:
    static QObjectList unite(const QObjectList& inA, const QObjectList& inB);
    static QObjectList subtract(const QObjectList& inA, const QObjectList& inB);
    static QObjectList intersect(const QObjectList& inA, const QObjectList& inB);
};
