#include "OvReportEditor.h"

#include "JxReport.h"

#include <QtWidgets/QTextEdit>

namespace Ovg {

OvReportEditor::OvReportEditor(QTextEdit* inTextEdit)
    : mTextEdit(inTextEdit)
{}

OvReportEditor::~OvReportEditor()
{
    if (JxReport* report = JxReport::instance())
        report->forget(this);
}

QTextEdit* OvReportEditor::textEdit() const
{
    return mTextEdit;
}

bool OvReportEditor::isReadOnly() const
{
    return !mTextEdit || mTextEdit->isReadOnly();
}

void OvReportEditor::setReadOnly(bool inIsReadOnly)
{
    if (mTextEdit)
        mTextEdit->setReadOnly(inIsReadOnly);
}

void OvReportEditor::undo()
{
    if (!isReadOnly())
        mTextEdit->undo();
}

void OvReportEditor::redo()
{
    if (!isReadOnly())
        mTextEdit->redo();
}

} // namespace Ovg
