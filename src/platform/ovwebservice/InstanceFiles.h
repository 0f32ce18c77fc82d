#pragma once

#include <QStringList>

#include <functional>
#include <memory>

namespace Ovg {

/// Port: brings the files of instances that are known, but not there yet. A host with an archive has one.
///
/// Somebody's object, shared with the threads that read series: install() makes one the one that instance()
/// finds. The two are for the application's thread, provide() for any.
class InstanceFiles
{
public:
    virtual ~InstanceFiles();

    /// Null when all files are there anyway.
    static std::shared_ptr<InstanceFiles> instance();
    /// Null for none.
    static void install(std::shared_ptr<InstanceFiles> inFiles);

    /// Gets the number of files there and of all; returns false to stop.
    using Progress = std::function<bool(int inDone, int inTotal)>;

    /// Brings those of \a inPaths that are its own and not there, and returns when all are there or can't be
    /// had, which is logged. Blocks.
    virtual void provide(const QStringList& inPaths, const Progress& inProgress = {}) = 0;
};

} // namespace Ovg
