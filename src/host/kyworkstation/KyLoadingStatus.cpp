#include "KyLoadingStatus.h"

#include <QtCore/QLocale>
#include <QtGui/QShortcut>
#include <QtWidgets/QLabel>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QToolButton>

namespace {

constexpr int ProgressWidth = 220;
constexpr int ResultIndent = 4;

} // namespace

KyLoadingStatus::KyLoadingStatus(KyStudyLoader& inLoader, QStatusBar& ioBar)
    : QObject(&ioBar)
    , mResult(new QLabel(&ioBar))
    , mProgress(new QProgressBar(&ioBar))
    , mCancel(new QToolButton(&ioBar))
    , mTotals(new QLabel(&ioBar))
{
    makeWidgets(inLoader, ioBar);
    connect(&inLoader, &KyStudyLoader::started, this, &KyLoadingStatus::showStart);
    connect(&inLoader, &KyStudyLoader::progressed, this, &KyLoadingStatus::showProgress);
    connect(&inLoader, &KyStudyLoader::loaded, this,
            [this](const QString& folder, KyStudyLoader::Kind, const Ovg::StudySourceResult& result) {
                addResult(folder, result);
            });
    connect(&inLoader, &KyStudyLoader::finished, this, &KyLoadingStatus::finish);
}

/// The result is a widget of its own: a message of the bar would go as soon as a menu shows a tip.
void KyLoadingStatus::makeWidgets(KyStudyLoader& inLoader, QStatusBar& ioBar)
{
    mResult->setObjectName(QStringLiteral("loadResult"));
    mResult->setTextFormat(Qt::PlainText);
    mResult->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    mResult->setIndent(ResultIndent);
    mTotals->setObjectName(QStringLiteral("summary"));
    mProgress->setObjectName(QStringLiteral("progress"));
    mProgress->setAccessibleName(tr("Progress of loading"));
    mProgress->setMaximumWidth(ProgressWidth);
    mCancel->setObjectName(QStringLiteral("cancelLoading"));
    mCancel->setText(tr("Cancel"));
    mCancel->setToolTip(tr("Stop loading (Esc)"));
    connect(mCancel, &QToolButton::clicked, &inLoader, &KyStudyLoader::cancel);
    // The button's own shortcut would first press it for a while. This one holds only while it is on view,
    // too.
    new QShortcut(QKeySequence(Qt::Key_Escape), mCancel, &inLoader, &KyStudyLoader::cancel);
    ioBar.addWidget(mResult, 1);
    ioBar.addPermanentWidget(mProgress);
    ioBar.addPermanentWidget(mCancel);
    ioBar.addPermanentWidget(mTotals);
    mProgress->hide();
    mCancel->hide();
}

void KyLoadingStatus::showTotals(int inStudies, int inImages)
{
    const QLocale locale;
    mTotals->setText(
        tr("Studies: %1   Images: %2").arg(locale.toString(inStudies), locale.toString(inImages)));
}

void KyLoadingStatus::clearResult()
{
    mResults = Results();
    mResult->clear();
    mResult->setToolTip(QString());
}

void KyLoadingStatus::showStart(const QString& inFolder)
{
    mResult->setText(tr("Reading %1").arg(inFolder));
    showProgress(0, 0);
}

void KyLoadingStatus::showProgress(int inDone, int inTotal)
{
    mProgress->show();
    mCancel->show();
    mProgress->setRange(0, inTotal);
    mProgress->setValue(inDone);
}

void KyLoadingStatus::addResult(const QString& inFolder, const Ovg::StudySourceResult& inResult)
{
    mResults.skippedFiles += inResult.notDicom + inResult.damaged + inResult.noStudy;
    mResults.images += inResult.instances;
    if (!inResult.errors.isEmpty())
        mResults.failures.append(inResult.errors.first());
    else if (inResult.studies.empty())
        mResults.failures.append(tr("There is no DICOM study below %1").arg(inFolder));
    else
        mResults.opened.append(inFolder);
}

/// What failed comes first, whatever came behind it.
QString KyLoadingStatus::resultText() const
{
    QStringList parts;
    if (!mResults.failures.isEmpty())
        parts.append(mResults.failures.first());
    if (mResults.failures.size() > 1)
        parts.append(tr("further folders that failed: %1").arg(mResults.failures.size() - 1));
    if (mResults.opened.size() == 1)
        parts.append(tr("Opened %1 (images: %2)").arg(mResults.opened.first()).arg(mResults.images));
    else if (!mResults.opened.isEmpty())
        parts.append(tr("Opened folders: %1 (images: %2)").arg(mResults.opened.size()).arg(mResults.images));
    if (mResults.skippedFiles > 0)
        parts.append(tr("files skipped: %1, see the log").arg(mResults.skippedFiles));
    return parts.join(QStringLiteral(" – "));
}

void KyLoadingStatus::finish(bool inCancelled)
{
    mProgress->hide();
    mCancel->hide();
    mResult->setText(inCancelled ? tr("Loading was cancelled") : resultText());
    mResult->setToolTip((mResults.failures + mResults.opened).join(QLatin1Char('\n')));
    mResults = Results();
}
