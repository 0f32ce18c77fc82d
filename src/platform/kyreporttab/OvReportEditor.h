#pragma once

#include <QtCore/QPointer>

class QTextEdit;

namespace Ovg {

/// The editor of one report, around the text widget that shows it: rich text with undo, which may be read
/// only.
///
/// Whoever shows a report makes one and tells JxReport; its end takes it from there. The widget is somebody
/// else's and may go first; there is none then, and everything here does nothing. GUI thread only.
class OvReportEditor
{
public:
    explicit OvReportEditor(QTextEdit* inTextEdit = nullptr);
    ~OvReportEditor();
    OvReportEditor(const OvReportEditor&) = delete;
    OvReportEditor& operator=(const OvReportEditor&) = delete;

    /// Null without a widget.
    QTextEdit* textEdit() const;

    /// Whether the user, and scripts, can only read. True without a widget.
    bool isReadOnly() const;
    void setReadOnly(bool inIsReadOnly);

    /// Take the last change of the user or of a script back, or make it again; not in a report that can only
    /// be read.
    void undo();
    void redo();

private:
    const QPointer<QTextEdit> mTextEdit;
};

} // namespace Ovg
