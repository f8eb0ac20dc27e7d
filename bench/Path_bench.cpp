// Benchmarks of operations on paths that do not access the file system.

#include <Kelbase/common/common_path.h>

#include "Comparison.h"

#ifdef BENCH_QT
#include <QDir>
#include <QFileInfo>
#endif
#ifdef BENCH_POCO
#include <Poco/Path.h>
#endif

std::string Show(const FilePath& path) { return comparison::Show(path.ToString()); }
std::string Show(const FolderPath& path) {
    std::string text = comparison::Show(path.ToString());
    text.pop_back();
    return text;
}

namespace {

using comparison::Comparison;
using comparison::Opaque;
namespace fs = std::filesystem;

constexpr char kClean[] = "/Library/Application Support/Korvane/Updater/install_status.txt";
constexpr char kDirty[] = "/Library//Application Support/Korvane/Fusewright/../Updater/install_status.txt";

void enterNormalizing(const char* job, const char* text) {
    Comparison(job)
        .Add("ours", [s = String(text)]() mutable { return FilePath(Opaque(s), false).ToString(); })
        .Add("std", [s = std::string(text)]() mutable { return fs::path(Opaque(s)).lexically_normal(); })
#ifdef BENCH_POCO
        .Add("Poco", [s = std::string(text)]() mutable { return Poco::Path(Opaque(s)).toString(); })
#endif
#ifdef BENCH_QT
        .Add("QDir", [s = QString(text)]() mutable { return QDir::cleanPath(Opaque(s)); })
#endif
        ;
}

void enterComparison() {
    constexpr char other[] = "/library/application support/korvane/updater/install_status.txt";
    Comparison("same_place")
        .Add("ours", [a = FilePath(kDirty, false),
                      b = FilePath(other, false)]() mutable { return Opaque(a) == Opaque(b); })
#ifdef BENCH_QT
        .Add("QDir",
             [a = QString(kDirty), b = QString(other)]() mutable {
                 return QDir::cleanPath(Opaque(a)).compare(QDir::cleanPath(Opaque(b)), Qt::CaseInsensitive) ==
                        0;
             })
#endif
        .Add("std", [a = fs::path(kDirty), b = fs::path(other)]() mutable {
            return Opaque(a).lexically_normal() == Opaque(b).lexically_normal();
        });
}

void enterParts() {
    const FilePath ours(kClean, false);
    const fs::path theirs(kClean);
    Comparison("filename")
        .Add("ours", [p = ours]() mutable { return Opaque(p).GetFilename(); })
        .Add("std", [p = theirs]() mutable { return Opaque(p).filename(); })
#ifdef BENCH_QT
        .Add("QFileInfo", [p = QFileInfo(kClean)]() mutable { return Opaque(p).fileName(); })
#endif
        ;
    Comparison("extension")
        .Add("ours", [p = ours]() mutable { return Opaque(p).GetExtension(); })
        .Add("std", [p = theirs]() mutable { return Opaque(p).extension().string().substr(1); })
#ifdef BENCH_QT
        .Add("QFileInfo", [p = QFileInfo(kClean)]() mutable { return Opaque(p).suffix(); })
#endif
        ;
    Comparison("parent")
        .Add("ours", [p = ours]() mutable { return Opaque(p).GetFolder(); })
        .Add("std", [p = theirs]() mutable { return Opaque(p).parent_path(); })
#ifdef BENCH_QT
        .Add("QFileInfo", [p = QFileInfo(kClean)]() mutable { return Opaque(p).path(); })
#endif
        ;
    constexpr char folder[] = "/Library/Application Support/Korvane", name[] = "install_status.txt";
    Comparison("join")
        .Add("ours",
             [f = FolderPath(folder, false), n = String(name)]() mutable { return Opaque(f) + Opaque(n); })
        .Add("std", [f = fs::path(folder), n = std::string(name)]() mutable { return Opaque(f) / Opaque(n); })
#ifdef BENCH_QT
        .Add("QDir",
             [f = QDir(folder), n = QString(name)]() mutable { return Opaque(f).filePath(Opaque(n)); })
#endif
        ;
}

[[maybe_unused]] const bool kRegistered =
    (enterNormalizing("normalize_clean", kClean), enterNormalizing("normalize_dirty", kDirty),
     enterComparison(), enterParts(), true);

} // namespace
