#include "KySessionLogPane.h"

#include "KyLogPane.h"

#include <common/KySessionLog.h>

#include <QtCore/QDir>
#include <QtCore/QUrl>
#include <QtGui/QDesktopServices>
#include <QtWidgets/QBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>

KySessionLogPane::KySessionLogPane(QWidget* inParent)
    : QWidget(inParent)
{
    KySessionLog* session = KySessionLog::instance();
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    if (!session) {
        column->addWidget(new QLabel(tr("There is no session log."), this), 0, Qt::AlignCenter);
        return;
    }
    column->addWidget(new KyLogPane(session->log(), QStringLiteral("sessionLog"), this), 1);
    column->addWidget(makeFileBar(session->file()));
}

QWidget* KySessionLogPane::makeFileBar(const QString& inFile)
{
    auto* bar = new QWidget(this);
    auto* name = new QLabel(bar);
    name->setObjectName(QStringLiteral("sessionLogFile"));
    name->setTextFormat(Qt::PlainText);
    name->setText(inFile.isEmpty() ? tr("These lines are not kept in a file.")
                                   : QDir::toNativeSeparators(inFile));
    name->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    name->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    name->setToolTip(name->text());
    auto* open = new QPushButton(tr("Open Fil&e"), bar);
    open->setObjectName(QStringLiteral("openSessionLog"));
    open->setToolTip(tr("Open the file that keeps the session log"));
    open->setEnabled(!inFile.isEmpty());
    connect(open, &QPushButton::clicked, this,
            [inFile] { QDesktopServices::openUrl(QUrl::fromLocalFile(inFile)); });

    auto* row = new QHBoxLayout(bar);
    row->setContentsMargins(4, 0, 4, 4);
    row->addWidget(name, 1);
    row->addWidget(open);
    return bar;
}
