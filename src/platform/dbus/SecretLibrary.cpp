#include "platform/dbus/SecretLibrary.h"

#include "appbase/LibraryLoader.h"

const SecretLibrary *SecretLibrary::loaded()
{
    static const SecretLibrary *const library = []() -> const SecretLibrary * {
        static SecretLibrary table{};
        void *secret = LibraryLoader::open("libsecret-1.so.0");
        using L = LibraryLoader;
        const bool complete = L::resolve(secret, "secret_service_get_sync", table.serviceGetSync)
            && L::resolve(secret, "secret_service_search_sync", table.serviceSearchSync)
            && L::resolve(secret, "secret_service_unlock_sync", table.serviceUnlockSync)
            && L::resolve(secret, "secret_item_get_locked", table.itemGetLocked)
            && L::resolve(secret, "secret_item_load_secret_sync", table.itemLoadSecretSync)
            && L::resolve(secret, "secret_item_get_secret", table.itemGetSecret)
            && L::resolve(secret, "secret_item_delete_sync", table.itemDeleteSync)
            && L::resolve(secret, "secret_value_get", table.valueGet)
            && L::resolve(secret, "secret_value_unref", table.valueUnref)
            && L::resolve(secret, "g_hash_table_new", table.hashTableNew)
            && L::resolve(secret, "g_hash_table_insert", table.hashTableInsert)
            && L::resolve(secret, "g_hash_table_unref", table.hashTableUnref)
            && L::resolve(secret, "g_str_hash", table.strHash)
            && L::resolve(secret, "g_str_equal", table.strEqual)
            && L::resolve(secret, "g_list_free_full", table.listFreeFull)
            && L::resolve(secret, "g_list_append", table.listAppend)
            && L::resolve(secret, "g_object_unref", table.objectUnref)
            && L::resolve(secret, "g_error_free", table.errorFree)
            && L::resolve(secret, "g_dbus_error_get_remote_error", table.dbusErrorGetRemoteError)
            && L::resolve(secret, "g_io_error_quark", table.ioErrorQuark)
            && L::resolve(secret, "g_free", table.free);
        return complete ? &table : nullptr;
    }();
    return library;
}
