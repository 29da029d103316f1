#pragma once

#include <QString>

#include <functional>

namespace kelp::command {

/// An exclusive advisory lock on a folder, held until destruction; the system drops it when the
/// process ends in whatever way.
class FolderLock
{
public:
    enum class Wait
    {
        Yes,
        No
    };

    FolderLock() = default;
    FolderLock(const QString& folder, Wait wait);
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;
    FolderLock(FolderLock&& other) noexcept;
    FolderLock& operator=(FolderLock&& other) noexcept;

    bool isHeld() const { return m_descriptor >= 0; }

private:
    int m_descriptor = -1;
};

/// The folder that --out names. A run builds its results below a hidden working folder
/// inside it, which it keeps locked, and moves each to its place when it is whole. Working folders
/// whose run is gone are removed by the next run.
class ResultsFolder
{
public:
    /// Makes the folder if need be. Throws IOFailure with path and reason.
    explicit ResultsFolder(const QString& path);
    /// Removes the working folder with what is in it.
    ~ResultsFolder();
    ResultsFolder(const ResultsFolder&) = delete;
    ResultsFolder& operator=(const ResultsFolder&) = delete;

    /// Whether a name inside such a folder is that of a working folder.
    static bool isWorkingFolder(const QString& name);

    const QString& getPath() const { return m_path; }
    QString pathOf(const QString& name) const { return m_path + '/' + name; }

    /// An empty folder to build a scan's results in. Throws IOFailure.
    QString makeBuildFolder(const QString& name);
    void discard(const QString& buildFolder);

    /// Moves a whole folder to its place in one step. What stands there is replaced and removed if
    /// mayReplace, which is given its path, allows it. Throws IOFailure, and what stood there then
    /// still does.
    void publish(const QString& buildFolder, const QString& name,
                 const std::function<bool(const QString&)>& mayReplace);

private:
    void removeLeftovers();
    void makeWorkingFolder();

    QString m_path;
    QString m_workingFolder;
    FolderLock m_lock;
};

} // namespace kelp::command
