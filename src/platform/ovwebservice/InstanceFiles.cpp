#include "InstanceFiles.h"

namespace Ovg {

namespace {

std::shared_ptr<InstanceFiles>& installed()
{
    static std::shared_ptr<InstanceFiles> files;
    return files;
}

} // namespace

InstanceFiles::~InstanceFiles() = default;

std::shared_ptr<InstanceFiles> InstanceFiles::instance()
{
    return installed();
}

void InstanceFiles::install(std::shared_ptr<InstanceFiles> inFiles)
{
    installed() = std::move(inFiles);
}

} // namespace Ovg
