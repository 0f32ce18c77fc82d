#include "KyEditor.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace {

/// The oldest first. Never destroyed, so that editors that end late can still leave it.
std::vector<KyEditor*>& editors()
{
    static auto* const all = new std::vector<KyEditor*>;
    return *all;
}

} // namespace

KyEditor::KyEditor(const char* inKey)
    : mKey(inKey ? inKey : "")
{
    editors().push_back(this);
}

KyEditor::~KyEditor()
{
    std::erase(editors(), this);
}

KyEditor* KyEditor::editor(const char* inKey, bool inIsToBeOpened)
{
    const std::string_view key = inKey ? inKey : "";
    const auto found = std::find_if(editors().rbegin(), editors().rend(),
                                    [&](const KyEditor* e) { return e->mKey == key && !key.empty(); });
    if (found == editors().rend())
        return nullptr;
    KyEditor* const present = *found;
    if (inIsToBeOpened)
        present->open();
    return present;
}

QObject* KyEditor::scriptObject(QObject*)
{
    return nullptr;
}
