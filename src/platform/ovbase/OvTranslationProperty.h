#pragma once

#include <QString>

#include <functional>

class QObject;

/// Labels of property paths: what the user reads for "Scripting.LogNumLines" and for its group "Scripting".
///
/// Always there; labels stay to the end of the process. GUI thread, and while static objects are built.
class OvTranslationProperty
{
public:
    using LabelFunction = std::function<void(const QString& inPath)>;

    /// Records \a inText (UTF-8) as the label of the path \a inKey (Latin-1); a later label replaces it. With
    /// a \a inContext (Latin-1) the path is the context, "." and the key. Returns \a inKey, so that a
    /// property can be labelled where it is named. A null key or text records nothing.
    ///
    /// For translators, a text in the source is marked by QT_TRANSLATE_NOOP("OvTranslationProperty", "Text").
    static const char* translate(const char* inKey, const char* inText, const char* inContext);

    /// The label of \a inPath as the user reads it: the text recorded, or its translation in the context
    /// "OvTranslationProperty" where the application has one installed. Empty when there is none.
    static QString label(const QString& inPath);

    /// Calls \a inFunction for each new or changed label, as long as \a inContext lives (a null one: for
    /// ever).
    static void observeLabels(const QObject* inContext, LabelFunction inFunction);
};
