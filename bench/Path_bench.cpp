// Names of files and folders, as text.

#include <Kelbase/common/common_path.h>

#include "Contest.h"

#ifdef BENCH_QT
#include <QDir>
#include <QFileInfo>
#endif
#ifdef BENCH_POCO
#include <Poco/Path.h>
#endif

std::string show(const FilePath& path) { return contest::show(path.ToString()); }
std::string show(const FolderPath& path) {
    std::string text = contest::show(path.ToString());
    text.pop_back();
    return text;
}

namespace {

using contest::Contest;
using contest::opaque;
namespace fs = std::filesystem;

constexpr char clean[] = "/Library/Application Support/Korvane/Updater/install_status.txt";
constexpr char dirty[] = "/Library//Application Support/Korvane/Fusewright/../Updater/install_status.txt";

void enterNormalizing(const char* job, const char* text) {
    Contest(job)
        .by("ours", [s = String(text)]() mutable { return FilePath(opaque(s), false).ToString(); })
        .by("std", [s = std::string(text)]() mutable { return fs::path(opaque(s)).lexically_normal(); })
#ifdef BENCH_POCO
        .by("Poco", [s = std::string(text)]() mutable { return Poco::Path(opaque(s)).toString(); })
#endif
#ifdef BENCH_QT
        .by("QDir", [s = QString(text)]() mutable { return QDir::cleanPath(opaque(s)); })
#endif
        ;
}

void enterComparison() {
    constexpr char other[] = "/library/application support/korvane/updater/install_status.txt";
    Contest("same_place")
        .by("ours", [a = FilePath(dirty, false),
                     b = FilePath(other, false)]() mutable { return opaque(a) == opaque(b); })
#ifdef BENCH_QT
        .by("QDir",
            [a = QString(dirty), b = QString(other)]() mutable {
                return QDir::cleanPath(opaque(a)).compare(QDir::cleanPath(opaque(b)), Qt::CaseInsensitive) ==
                       0;
            })
#endif
        .by("std", [a = fs::path(dirty), b = fs::path(other)]() mutable {
            return opaque(a).lexically_normal() == opaque(b).lexically_normal();
        });
}

void enterParts() {
    const FilePath ours(clean, false);
    const fs::path theirs(clean);
    Contest("filename")
        .by("ours", [p = ours]() mutable { return opaque(p).GetFilename(); })
        .by("std", [p = theirs]() mutable { return opaque(p).filename(); })
#ifdef BENCH_QT
        .by("QFileInfo", [p = QFileInfo(clean)]() mutable { return opaque(p).fileName(); })
#endif
        ;
    Contest("extension")
        .by("ours", [p = ours]() mutable { return opaque(p).GetExtension(); })
        .by("std", [p = theirs]() mutable { return opaque(p).extension().string().substr(1); })
#ifdef BENCH_QT
        .by("QFileInfo", [p = QFileInfo(clean)]() mutable { return opaque(p).suffix(); })
#endif
        ;
    Contest("parent")
        .by("ours", [p = ours]() mutable { return opaque(p).GetFolder(); })
        .by("std", [p = theirs]() mutable { return opaque(p).parent_path(); })
#ifdef BENCH_QT
        .by("QFileInfo", [p = QFileInfo(clean)]() mutable { return opaque(p).path(); })
#endif
        ;
    constexpr char folder[] = "/Library/Application Support/Korvane", name[] = "install_status.txt";
    Contest("join")
        .by("ours",
            [f = FolderPath(folder, false), n = String(name)]() mutable { return opaque(f) + opaque(n); })
        .by("std", [f = fs::path(folder), n = std::string(name)]() mutable { return opaque(f) / opaque(n); })
#ifdef BENCH_QT
        .by("QDir", [f = QDir(folder), n = QString(name)]() mutable { return opaque(f).filePath(opaque(n)); })
#endif
        ;
}

[[maybe_unused]] const bool entered =
    (enterNormalizing("normalize_clean", clean), enterNormalizing("normalize_dirty", dirty),
     enterComparison(), enterParts(), true);

} // namespace
