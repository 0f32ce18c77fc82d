#pragma once

#include <QtCore/QObject>
#include <QtCore/QStringList>

#include <memory>
#include <vector>

class KyMainWindow;
class KyReportEditor;
class KyReportPanel;
class KyTool;
class QAction;

/// The tools of the workstation: those of the application, those of the tool files, and the tool bar that
/// shows them; and the panel of the report, which one of them opens.
///
/// Made behind the window, whose child it is.
class KyWorkstationTools : public QObject
{
    Q_OBJECT

public:
    KyWorkstationTools(KyMainWindow& inWindow, KyReportEditor& inReport);
    ~KyWorkstationTools() override;

    /// Loads the tool files of the installation, of the folder "tools" of \a inProfile, and \a inFiles, and
    /// shows all tools. Gives what is wrong with the files that cannot be used, a line each.
    QStringList load(const QString& inProfile, const QStringList& inFiles);

private:
    void addReport(KyReportEditor& inReport);
    void putOnView(KyReportPanel& inPanel, const QAction& inIsOpen);

    KyMainWindow& mWindow;
    KyReportEditor& mReport;
    std::vector<std::shared_ptr<KyTool>> mTools;
};
