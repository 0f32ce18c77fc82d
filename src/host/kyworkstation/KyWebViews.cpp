#include "KyWebViews.h"

#include <webengine/KyWebEngineInterface.h>
#include <webengine/KyWebEngineSandbox.h>

#include <kywebview/KyWebView.h>
#include <kywebview/KyWebViewRuntime.h>
#include <rnlib/RnLogFile.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonObject>
#include <QtCore/QPluginLoader>

namespace {

constexpr const char* Context = "BrowseCtrl";

QString pluginFile(const QString& inProgramFolder)
{
    for (const char* folder : {"../lib/kyscript", "../" KY_LIBDIR "/kyscript"}) {
        const QDir place(QDir(inProgramFolder).filePath(QLatin1String(folder)));
        const QStringList found = place.entryList({QStringLiteral("kywebengine.*")}, QDir::Files);
        if (!found.isEmpty())
            return place.absoluteFilePath(found.first());
    }
    return QString();
}

/// Before there is an application that knows it.
QString programFolder(const char* inProgram)
{
    const QFileInfo self(QStringLiteral("/proc/self/exe"));
    return self.isSymLink() ? QFileInfo(self.symLinkTarget()).path()
                            : QFileInfo(QFile::decodeName(inProgram)).absolutePath();
}

void warn(const QString& inText)
{
    getTheLogInstance().trace(2, Context, inText.toUtf8().constData());
}

} // namespace

/// Loads the plugin for the first view, and never lets it go: what is behind it can't be loaded twice.
class KyWebViews::Runtime final : public KyWebViewRuntime
{
public:
    Runtime(const QString& inFile, const QString& inDataFolder)
        : mLoader(inFile)
        , mDataFolder(inDataFolder)
    {
        mLoader.setLoadHints(QLibrary::PreventUnloadHint);
    }

    QString version() const override
    {
        return mLoader.metaData()
            .value(QStringLiteral("MetaData"))
            .toObject()
            .value(QStringLiteral("version"))
            .toString();
    }

    KyWebView* makeView(const QString& inProfile, QWidget* inParent) override
    {
        auto* engine = qobject_cast<KyWebEngineInterface*>(mLoader.instance());
        if (!engine) {
            warn(mLoader.errorString());
            return nullptr;
        }
        return engine->makeView(folder(inProfile), inParent);
    }

private:
    QString folder(const QString& inProfile) const
    {
        const QString name = QString::fromLatin1(inProfile.toUtf8().toPercentEncoding(" "));
        return mDataFolder.isEmpty() ? QString()
                                     : QDir(mDataFolder).filePath(QStringLiteral("ovbrowser-") + name);
    }

    QPluginLoader mLoader;
    const QString mDataFolder;
};

KyWebViews::KyWebViews(const QString& inProfile)
{
    const QString file = pluginFile(QCoreApplication::applicationDirPath());
    if (file.isEmpty() || !QCoreApplication::testAttribute(Qt::AA_ShareOpenGLContexts))
        return;
    const QString obstacle = KyWebEngineSandbox::obstacle();
    if (obstacle.isEmpty())
        mRuntime = std::make_unique<Runtime>(
            file, inProfile.isEmpty() ? QString() : QDir(inProfile).filePath(QStringLiteral("browser")));
    else
        warn(obstacle);
}

KyWebViews::~KyWebViews() = default;

/// The engine ends the process of an application that does not share its contexts.
void KyWebViews::prepare(const char* inProgram)
{
    if (!pluginFile(programFolder(inProgram)).isEmpty())
        QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
}
