// The library's headers have fields that Qt's keywords would rewrite.
#define QT_NO_KEYWORDS
#include "platform/KeyStore.h"

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

} // namespace

Result<void> saveKey(const QString& name, const QString& key)
{
    GError* error = nullptr;
    secret_password_store_sync(schema(), SECRET_COLLECTION_DEFAULT, "Corvelle",
        key.toUtf8().constData(), nullptr, &error, "name", name.toUtf8().constData(), nullptr);
    if (!error)
        return {};
    const Failure failure(QString::fromUtf8(error->message));
    g_error_free(error);
    return failure;
}

} // namespace corvelle
