#pragma once

namespace Ovg {
class OvReportEditor;
}

/// Which report is on view.
///
/// Somebody's object: construction makes it the one that instance() finds, destruction ends that. GUI thread
/// only.
class JxReport
{
public:
    JxReport();
    ~JxReport();
    JxReport(const JxReport&) = delete;
    JxReport& operator=(const JxReport&) = delete;

    /// Null in an application without reports.
    static JxReport* instance();

    /// The editor of the report on view; null when none is.
    Ovg::OvReportEditor* activeReport() const { return mActive; }
    /// Called by who shows reports. Null when none is on view any more.
    void setActiveReport(Ovg::OvReportEditor* inEditor) { mActive = inEditor; }
    /// That editor is not on view any more. Another one stays.
    void forget(const Ovg::OvReportEditor* inEditor);

private:
    Ovg::OvReportEditor* mActive = nullptr;
};
