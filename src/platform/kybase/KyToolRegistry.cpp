#include "KyToolRegistry.h"

#include <rnlib/RnLogFile.h>

#include <algorithm>
#include <map>
#include <string_view>

namespace {

using Tools = std::vector<KyTool*>;

struct Registry
{
    Tools tools; ///< The oldest first.
    std::map<std::string, Tools, std::less<>> byKey;
};

/// Never destroyed, so that tools that end late can still leave it.
Registry& registry()
{
    static auto* const all = new Registry;
    return *all;
}

/// The newest goes first where many end at once.
void eraseFrom(Tools& ioTools, const KyTool* inTool)
{
    const auto found = std::find(ioTools.rbegin(), ioTools.rend(), inTool);
    if (found != ioTools.rend())
        ioTools.erase(std::next(found).base());
}

} // namespace

void KyToolRegistry::add(KyTool& inTool)
{
    registry().tools.push_back(&inTool);
    if (!inTool.decorationKey().empty())
        registry().byKey[inTool.decorationKey()].push_back(&inTool);
}

void KyToolRegistry::remove(KyTool& inTool)
{
    eraseFrom(registry().tools, &inTool);
    const auto found = registry().byKey.find(inTool.decorationKey());
    if (found == registry().byKey.end())
        return;
    eraseFrom(found->second, &inTool);
    if (found->second.empty())
        registry().byKey.erase(found);
}

std::shared_ptr<KyTool> KyToolRegistry::find(const char* inKey, bool inIsQuiet)
{
    const auto found = registry().byKey.find(inKey ? std::string_view(inKey) : std::string_view());
    if (found != registry().byKey.end()) {
        for (auto it = found->second.rbegin(); it != found->second.rend(); ++it) {
            if (auto tool = (*it)->weak_from_this().lock())
                return tool;
        }
    }
    if (!inIsQuiet)
        getTheLogInstance().tracef(2, "KyToolRegistry", "There is no tool \"%s\"", inKey ? inKey : "");
    return nullptr;
}

std::vector<std::shared_ptr<KyTool>> KyToolRegistry::tools()
{
    std::vector<std::shared_ptr<KyTool>> owned;
    for (KyTool* tool : registry().tools) {
        if (auto shared = tool->weak_from_this().lock())
            owned.push_back(std::move(shared));
    }
    return owned;
}

void KyToolRegistry::refreshUIs()
{
    for (const auto& tool : tools())
        tool->refreshUIs();
}
