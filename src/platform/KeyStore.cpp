// The library's headers have fields that Qt's keywords would rewrite.
#define QT_NO_KEYWORDS
#include "platform/KeyStore.h"

#include <QLibrary>

#include <libsecret/secret.h>

namespace corvelle {

namespace {

const SecretSchema* schema()
{
    static const SecretSchema keys = {"app.corvelle.Key", SECRET_SCHEMA_NONE,
        {{"name", SECRET_SCHEMA_ATTRIBUTE_STRING}, {nullptr, SECRET_SCHEMA_ATTRIBUTE_STRING}}, 0,
        nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
    return &keys;
}

// Loaded when the first key is saved: with all that it brings along it would take a third of every
// start.
struct SecretLibrary
{
    decltype(&secret_password_store_sync) store = nullptr;
    decltype(&g_error_free) freeError = nullptr;

    SecretLibrary()
    {
        QLibrary library(QStringLiteral("secret-1"), 0);
        store = reinterpret_cast<decltype(store)>(library.resolve("secret_password_store_sync"));
        freeError = reinterpret_cast<decltype(freeError)>(library.resolve("g_error_free"));
    }
    bool isThere() const { return store && freeError; }
};

const SecretLibrary& secretLibrary()
{
    static const SecretLibrary library;
    return library;
}

} // namespace

Result<void> saveKey(const QString& name, const QString& key)
{
    if (!secretLibrary().isThere())
        return Failure(QStringLiteral("libsecret is not installed"));
    GError* error = nullptr;
    secretLibrary().store(schema(), SECRET_COLLECTION_DEFAULT, "Corvelle", key.toUtf8().constData(),
        nullptr, &error, "name", name.toUtf8().constData(), nullptr);
    if (!error)
        return {};
    const Failure failure(QString::fromUtf8(error->message));
    secretLibrary().freeError(error);
    return failure;
}

} // namespace corvelle
