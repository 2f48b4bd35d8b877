#pragma once

#include <curl/curl.h>

namespace orbitledge {

/// libcurl's functions, from a library that is loaded when the first request is made and not with the
/// program. It brings twenty-six others along, and to load them takes longer than all that the panel does
/// until it is drawn; here the thread of the requests waits for it.
struct CurlLibrary {
    decltype(&::curl_easy_init) easyInit;
    decltype(&::curl_easy_cleanup) easyCleanup;
    decltype(&::curl_easy_reset) easyReset;
    decltype(&::curl_easy_setopt) easySetopt;
    decltype(&::curl_easy_getinfo) easyGetinfo;
    decltype(&::curl_multi_init) multiInit;
    decltype(&::curl_multi_cleanup) multiCleanup;
    decltype(&::curl_multi_add_handle) multiAddHandle;
    decltype(&::curl_multi_remove_handle) multiRemoveHandle;
    decltype(&::curl_multi_perform) multiPerform;
    decltype(&::curl_multi_info_read) multiInfoRead;
    decltype(&::curl_multi_poll) multiPoll;
    decltype(&::curl_multi_wakeup) multiWakeup;
    decltype(&::curl_slist_append) slistAppend;
    decltype(&::curl_slist_free_all) slistFreeAll;
    decltype(&::curl_version_info) versionInfo;

    /// The one of this process, which stays; null where it is not installed. The first call waits, and may be
    /// made on any thread.
    static const CurlLibrary *shared();
};

} // namespace orbitledge
