#include <Kelbase/common/detail/common_string_scan.h>

#include <Kelbase/common/detail/common_string_scan_scalar.h>

std::size_t text_scan::Find(std::string_view text, std::string_view part) { return text.find(part); }

std::size_t text_scan::FindFolded(std::string_view text, std::string_view part) {
    return scalar::Find<true>(text, part);
}

bool text_scan::EqualFolded(const char* a, const char* b, std::size_t n) {
    return scalar::EqualFolded(a, b, n);
}

char* text_scan::WriteWords(std::string_view text, char* out) { return scalar::WriteWords(text, out, true); }

std::size_t text_scan::LowestPlaceholder(std::string_view text) { return scalar::LowestPlaceholder(text); }

std::size_t text_scan::LastSeparator(std::string_view text) { return scalar::LastSeparator(text); }

std::size_t text_scan::CopyName(std::string_view text, char* out) { return scalar::CopyName(text, out); }

bool text_scan::HasDirtyPath(std::string_view text) { return scalar::HasDirtyPath(text); }
