#include "KyScriptAuthToken.h"

#include "KyScriptEngine.h"
#include "KyScriptLog.h"

#include <rnlib/RnContract.h>

KyScriptAuthToken::KyScriptAuthToken(QObject* parent)
    : QObject(parent)
{}

KyScriptAuthToken::~KyScriptAuthToken() = default;

void KyScriptAuthToken::generate(int inType, int inKey, QString userData)
{
    KyScriptLog::line(0, QStringLiteral("Generate authentication token (type=%1, key=%2, userData=%3)")
                             .arg(QString::number(inType), QString::number(inKey), userData));
    if (OvAuthTokenGenerator* tokens = generator())
        tokens->generateAsync(inType, inKey, userData);
}

void KyScriptAuthToken::generateJWT(QString inName)
{
    KyScriptLog::line(0, QStringLiteral("Generate JWT for config %1").arg(inName));
    if (OvAuthTokenGenerator* tokens = generator())
        tokens->generateJWTAsync(inName);
}

OvAuthTokenGenerator* KyScriptAuthToken::generator()
{
    if (mGenerator)
        return mGenerator.get();
    mGenerator = new OvAuthTokenGenerator(nullptr);
    mGenerator->setCallback(this, "finished");

    auto* engine = qobject_cast<KyScriptEngine*>(qjsEngine(this));
    if (dbc_holds(engine))
        engine->registerForDestruction(this);
    return mGenerator.get();
}
