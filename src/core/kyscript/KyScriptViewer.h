#pragma once

#include "KyScriptExport.h"

#include <rnlib/RnHandle.h>
#include <rnlib/RnUniqueID.h>

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QVariant>

class KyBaseViewer;

/// One image viewer as scripts see it: its kind, its ids, what it shows.
///
/// Viewers come and go while a script holds its wrapper. So the wrapper keeps the viewer's id, never a
/// pointer, and finds the viewer again at each call. With the viewer gone, every operation gives the neutral
/// result named with it, as it does for whatever is missing on the way. Nothing here logs, reports a contract
/// or throws.
///
/// \a idx counts the image layers of the viewer from 0, which is also the default. Scripts can't construct
/// the class. Whoever makes a wrapper owns it and pins it.
class KYSCRIPT_EXPORT KyScriptViewer : public QObject
{
    Q_OBJECT

public:
    /// A null \a viewer gives a wrapper with neutral results only.
    KyScriptViewer(QObject* parent, KyBaseViewer* viewer);

    /// The kind as a word: "2D" for images that make up no volume, "slice" for slices through one, "volren"
    /// for a volume rendering, "curved" for a curved reformat. Neutral, and for other kinds: empty.
    Q_INVOKABLE QString type() const;

    /// The id that the hanging protocol gives what is on show. Neutral: empty.
    Q_INVOKABLE QString displaySetId() const;

    /// The id that the hanging protocol gives the images of the layer. Neutral: empty.
    Q_INVOKABLE QString imageSetId(int idx = 0) const;

    /// How the slice lies in the patient, a number of OvSlice::Orientation. Neutral: -1.
    Q_INVOKABLE int orientation(int idx = 0) const;

    /// Number of the slice on show, counted from 0, rounded to the nearest integer, a half to the even one.
    /// Neutral: -1.
    Q_INVOKABLE int sliceNumber(int idx = 0) const;

    /// Columns, rows and images of the volume as a list of three integers. Neutral: undefined.
    Q_INVOKABLE QVariant dims(int idx = 0) const;

    /// The value of the tag \a tagName, such as "DICOM.PatientName", for the slice on show and under the
    /// conditions of the viewer (KyDICOMObjectInfo::ConditionDictionary). Types as KyScriptStudy::getTag().
    /// Neutral, and for a name that is unknown or malformed: undefined.
    Q_INVOKABLE QVariant getTag(QString tagName, int idx = 0) const;

    /// How much of the second layer is seen, from 0 to 1; any viewer with a volume in one of its first two
    /// layers has one. Neutral: undefined.
    Q_INVOKABLE QVariant fusionWeight() const;

private:
    /// The viewer, counted so that it can't end during the call; null when it has closed.
    RnHandle<KyBaseViewer> viewer() const;

    const RnUniqueID mViewerId;
};
