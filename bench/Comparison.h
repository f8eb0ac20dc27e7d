#pragma once

/// @file
/// Declares the class that measures the time of one job with the library and with alternative
/// implementations, in one program.
///
///     Comparison("concat_3")
///         .Add("ours", [] { return Opaque(folder) + "/" + file; })
///         .Add("std", [] { return Opaque(folderStd) + "/" + fileStd; });
///
/// Each implementation is a benchmark with the name "JOB/IMPLEMENTATION". The result of the first
/// implementation is the expected result. An implementation with another result is measured too. The table
/// marks it with the label "differs".

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

/// Returns the object. The compiler's optimiser cannot use the value of the result.
template <typename T>
T& Opaque(T& object) {
    benchmark::DoNotOptimize(object);
    return object;
}

// Each function returns a result as a text. Equal results of different types have the same text.

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

/// A list of string types. Each type has the functions that a job uses.
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

/// One job. Each call of `Add` registers one implementation of the job, and `AddEach` registers several.
class Comparison {
public:
    /// Creates a job. One run of the job processes `itemsARun` items. The table shows the time per item.
    explicit Comparison(std::string jobName, double itemsARun = 1)
        : job(std::move(jobName)), items(itemsARun) {}

    /// Registers an implementation. `work` runs the job once and returns its result.
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

    /// Registers an implementation. `prepare` creates the input once before the runs. `run` runs the job once
    /// and returns nothing. `inspect` returns the result of the last run.
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

    /// Registers an implementation for each string type. `make` receives an empty string of the type and
    /// returns the function `work` of the implementation.
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
