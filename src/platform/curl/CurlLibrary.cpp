#include "platform/curl/CurlLibrary.h"

#include <dlfcn.h>

#include <optional>

namespace orbitledge {

namespace {

/// Of all versions whose functions are those of the header.
constexpr auto libraryName = "libcurl.so.4";

std::optional<CurlLibrary> load()
{
    // Kept to itself, so that nothing else finds its functions by name.
    void *const handle = ::dlopen(libraryName, RTLD_LAZY | RTLD_LOCAL);
    if (handle == nullptr)
        return std::nullopt;
    bool isWhole = true;
    const auto find = [&]<typename Function>(Function *&function, const char *name) {
        function = reinterpret_cast<Function *>(::dlsym(handle, name));
        isWhole = isWhole && function != nullptr;
    };
    CurlLibrary library{};
    find(library.easyInit, "curl_easy_init");
    find(library.easyCleanup, "curl_easy_cleanup");
    find(library.easyReset, "curl_easy_reset");
    find(library.easySetopt, "curl_easy_setopt");
    find(library.easyGetinfo, "curl_easy_getinfo");
    find(library.multiInit, "curl_multi_init");
    find(library.multiCleanup, "curl_multi_cleanup");
    find(library.multiAddHandle, "curl_multi_add_handle");
    find(library.multiRemoveHandle, "curl_multi_remove_handle");
    find(library.multiPerform, "curl_multi_perform");
    find(library.multiInfoRead, "curl_multi_info_read");
    find(library.multiPoll, "curl_multi_poll");
    find(library.multiWakeup, "curl_multi_wakeup");
    find(library.slistAppend, "curl_slist_append");
    find(library.slistFreeAll, "curl_slist_free_all");
    find(library.versionInfo, "curl_version_info");
    return isWhole ? std::optional(library) : std::nullopt;
}

} // namespace

const CurlLibrary *CurlLibrary::shared()
{
    static const std::optional<CurlLibrary> library = load();
    return library ? &*library : nullptr;
}

} // namespace orbitledge
