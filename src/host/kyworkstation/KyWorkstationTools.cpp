#include "KyWorkstationTools.h"

#include "KyMainWindow.h"
#include "KyReportPanel.h"
#include "KyToolBarPanel.h"
#include "KyToolKeys.h"

#include <common/KyCommandTool.h>
#include <common/KyReportEditor.h>
#include <common/KyToolFiles.h>

#include <kyreporttab/JxReport.h>

#include <QtCore/QDir>
#include <QtCore/QPointer>
#include <QtGui/QAction>
#include <QtWidgets/QDockWidget>

KyWorkstationTools::KyWorkstationTools(KyMainWindow& inWindow, KyReportEditor& inReport)
    : QObject(&inWindow)
    , mWindow(inWindow)
    , mReport(inReport)
{
    addReport(inReport);
    mWindow.addTools(new KyToolBarPanel(&inWindow));
}

KyWorkstationTools::~KyWorkstationTools()
{
    mReport.setOpener({});
}

/// The panel is closed at first: not every user writes reports here.
void KyWorkstationTools::addReport(KyReportEditor& inReport)
{
    auto* panel = new KyReportPanel(inReport, &mWindow);
    const QPointer<QDockWidget> dock =
        &mWindow.addPanel({QStringLiteral("reportDock"), tr("&Report"),
                           QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_R), false, Qt::RightDockWidgetArea},
                          panel);
    putOnView(*panel, *dock->toggleViewAction());
    const auto show = [dock](bool inOn) {
        if (dock)
            dock->setVisible(inOn);
        if (dock && inOn)
            dock->raise();
        return !dock.isNull();
    };
    inReport.setOpener([show] { show(true); });
    const auto tool = KyCommandTool::make("Report.Editor",
                                          {QStringLiteral("Report"),
                                           QStringLiteral("report.svg"),
                                           tr("Report"),
                                           tr("Show the report editor"),
                                           {}},
                                          KyCommandTool::Kind::Switch, show);
    tool->setActive(dock->toggleViewAction()->isChecked());
    connect(dock->toggleViewAction(), &QAction::toggled, this,
            [raw = tool.get()](bool inOn) { raw->setActive(inOn); });
    mTools.push_back(tool);
}

/// The report is on view, for scripts too, while its panel is open, be it behind another one.
void KyWorkstationTools::putOnView(KyReportPanel& inPanel, const QAction& inIsOpen)
{
    const auto show = [&report = inPanel.report()](bool inIsOnView) {
        JxReport* reports = JxReport::instance();
        if (reports && inIsOnView)
            reports->setActiveReport(&report);
        else if (reports)
            reports->forget(&report);
    };
    show(inIsOpen.isChecked());
    connect(&inIsOpen, &QAction::toggled, &inPanel, show);
}

QStringList KyWorkstationTools::load(const QString& inProfile, const QStringList& inFiles)
{
    QStringList files = KyToolFiles::in(KyToolFiles::installedFolder());
    if (!inProfile.isEmpty())
        files += KyToolFiles::in(QDir(inProfile).filePath(QStringLiteral("tools")));
    QStringList errors;
    for (const QString& file : files + inFiles) {
        const QString error = KyToolFiles::load(file);
        if (!error.isEmpty())
            errors.append(error);
    }
    KyToolKeys::apply();
    mWindow.findChild<KyToolBarPanel*>()->showTools();
    return errors;
}
