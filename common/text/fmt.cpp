// Debian has fmt as headers or as a shared library. Headers alone are compiled with every file that
// prints a line, and a board should need no shared library: so its definitions are compiled here,
// once.
#include <fmt/format-inl.h>

FMT_BEGIN_NAMESPACE
namespace detail {

template FMT_API dragonbox::decimal_fp<float> dragonbox::to_decimal(float x) noexcept;
template FMT_API dragonbox::decimal_fp<double> dragonbox::to_decimal(double x) noexcept;
template FMT_API locale_ref::locale_ref(const std::locale& locale);
template FMT_API std::locale locale_ref::get<std::locale>() const;
template FMT_API thousands_sep_result<char> thousands_sep_impl(locale_ref locale);
template FMT_API char decimal_point_impl(locale_ref locale);
template FMT_API void buffer<char>::append(const char* begin, const char* end);
template FMT_API void vformat_to(buffer<char>& out, string_view format,
                                 basic_format_args<buffer_context<char>> arguments,
                                 locale_ref locale);

}  // namespace detail
FMT_END_NAMESPACE
