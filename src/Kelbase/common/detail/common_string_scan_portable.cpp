#include <Kelbase/common/detail/common_string_scan.h>

#include <Kelbase/common/detail/common_string_scan_scalar.h>

std::size_t text_scan::Find(std::string_view text, std::string_view part) { return text.find(part); }

std::size_t text_scan::FindFolded(std::string_view text, std::string_view part) {
    return plain::Find<true>(text, part);
}

bool text_scan::EqualFolded(const char* a, const char* b, std::size_t n) {
    return plain::EqualFolded(a, b, n);
}

char* text_scan::WriteWords(std::string_view text, char* out) { return plain::WriteWords(text, out, true); }

std::size_t text_scan::LowestPlaceholder(std::string_view text) { return plain::LowestPlaceholder(text); }

std::size_t text_scan::LastSeparator(std::string_view text) { return plain::LastSeparator(text); }

std::size_t text_scan::CopyName(std::string_view text, char* out) { return plain::CopyName(text, out); }

bool text_scan::HasDirtyPath(std::string_view text) { return plain::HasDirtyPath(text); }
