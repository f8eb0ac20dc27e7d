#pragma once

/// One job, done by the library and by what a user would take instead, in one program.
///
///     Comparison("concat_3")
///         .Add("ours", [] { return Opaque(folder) + "/" + file; })
///         .Add("std", [] { return Opaque(folderStd) + "/" + fileStd; });
///
/// Each entry is a benchmark "job/who". The first entry's result is taken for right: an entry with another
/// result is timed too, and labelled "differs", so that the table can say so.

#include <benchmark/benchmark.h>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <Kelbase/common/common_string.h>
#ifdef BENCH_QT
#include <QByteArray>
#include <QString>
#endif

namespace comparison {

/// The same object, of which the compiler no longer knows what it holds.
template <typename T>
T& Opaque(T& object) {
    benchmark::DoNotOptimize(object);
    return object;
}

// What a result looks like, whoever made it.

std::string Show(double v);
inline std::string Show(const std::string& v) { return v; }
inline std::string Show(const String& v) { return {v.Latin1(), v.GetLength()}; }
inline std::string Show(const std::filesystem::path& v) { return v.string(); }
#ifdef BENCH_QT
inline std::string Show(const QString& v) { return v.toStdString(); }
inline std::string Show(const QByteArray& v) { return v.toStdString(); }
#endif
template <typename T>
std::string Show(const std::shared_ptr<T>& v) {
    return Show(*v);
}
template <typename T, std::enable_if_t<std::is_arithmetic_v<T>, int> = 0>
std::string Show(T v) {
    return Show(static_cast<double>(v));
}
template <typename List, typename = typename List::value_type>
std::string Show(const List& list) {
    std::string shown;
    for (const auto& item : list) shown += Show(item) + '\n';
    return shown;
}

/// Kinds of text that the same lines of a user's program can be written with.
template <typename... Kinds>
struct TextKinds {};
#ifdef BENCH_QT
using AllTexts = TextKinds<String, std::string, QByteArray, QString>;
#else
using AllTexts = TextKinds<String, std::string>;
#endif

inline const char* NameOf(const String&) { return "ours"; }
inline const char* NameOf(const std::string&) { return "std"; }
#ifdef BENCH_QT
inline const char* NameOf(const QByteArray&) { return "QByteArray"; }
inline const char* NameOf(const QString&) { return "QString"; }
#endif

class Comparison {
public:
    /// A run of the job handles `items`; the table tells the time of one.
    explicit Comparison(std::string jobName, double itemsARun = 1)
        : job(std::move(jobName)), items(itemsARun) {}

    template <typename Work>
    Comparison& Add(const std::string& implementation, Work work) {
        Register(implementation, Show(work()), [work](benchmark::State& state) mutable {
            for (auto _ : state) {
                auto result = work();
                benchmark::DoNotOptimize(result);
            }
        });
        return *this;
    }

    /// A run that answers nothing: it works on what `prepare` has made, and `inspect` tells the result.
    template <typename Run, typename Prepare, typename Inspect>
    Comparison& Add(const std::string& implementation, Run run, Prepare prepare, Inspect inspect) {
        prepare();
        run();
        Register(implementation, inspect(), [run, prepare](benchmark::State& state) {
            prepare();
            for (auto _ : state) {
                run();
                benchmark::ClobberMemory();
            }
        });
        return *this;
    }

    /// An entry for each kind of text: `make` gets an empty one and answers the work.
    template <typename... Kinds, typename Make>
    Comparison& AddEach(TextKinds<Kinds...>, Make make) {
        (Add(NameOf(Kinds()), make(Kinds())), ...);
        return *this;
    }

private:
    void Register(const std::string& implementation, const std::string& result,
                  std::function<void(benchmark::State&)> run);

    std::string job;
    double items;
    bool hasExpected = false;
    std::string expected;
};

} // namespace comparison
