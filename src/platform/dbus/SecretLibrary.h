#pragma once

#include <libsecret/secret.h>

// libsecret, loaded the first time glimpso looks into the desktop's keyring,
// not when the program starts: with GIO and GObject behind it, it would weigh
// on every idle tray copy for a look that happens once, to move credentials
// an older version left there. GLib's own helpers come through the same
// handle, from the libraries libsecret brings.
struct SecretLibrary {
    decltype(&secret_service_get_sync) serviceGetSync;
    decltype(&secret_service_search_sync) serviceSearchSync;
    decltype(&secret_service_unlock_sync) serviceUnlockSync;
    decltype(&secret_item_get_locked) itemGetLocked;
    decltype(&secret_item_load_secret_sync) itemLoadSecretSync;
    decltype(&secret_item_get_secret) itemGetSecret;
    decltype(&secret_item_delete_sync) itemDeleteSync;
    decltype(&secret_value_get) valueGet;
    decltype(&secret_value_unref) valueUnref;
    decltype(&g_hash_table_new) hashTableNew;
    decltype(&g_hash_table_insert) hashTableInsert;
    decltype(&g_hash_table_unref) hashTableUnref;
    decltype(&g_str_hash) strHash;
    decltype(&g_str_equal) strEqual;
    decltype(&g_list_free_full) listFreeFull;
    decltype(&g_list_append) listAppend;
    decltype(&g_object_unref) objectUnref;
    decltype(&g_error_free) errorFree;
    decltype(&g_dbus_error_get_remote_error) dbusErrorGetRemoteError;
    decltype(&g_io_error_quark) ioErrorQuark;
    decltype(&g_free) free;

    // Loaded at the first call; null when libsecret or one of its functions
    // can't be found, which counts as a desktop without a keyring.
    static const SecretLibrary *loaded();
};
