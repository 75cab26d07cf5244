// What the C++ library asks of the C library for texts in a given language.
#pragma once

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <cwchar>

#include <bits/types/locale_t.h>
#include <locale.h>

#define _CTYPE_A 0x00000100L
#define _CTYPE_C 0x00000200L
#define _CTYPE_D 0x00000400L
#define _CTYPE_L 0x00001000L
#define _CTYPE_P 0x00002000L
#define _CTYPE_S 0x00004000L
#define _CTYPE_U 0x00008000L
#define _CTYPE_X 0x00010000L
#define _CTYPE_B 0x00020000L
#define _CTYPE_R 0x00040000L

extern "C" {
size_t __mb_cur_max_l(locale_t locale);
#define MB_CUR_MAX_L(locale) __mb_cur_max_l(locale)
wint_t btowc_l(int byte, locale_t locale);
int wctob_l(wint_t character, locale_t locale);
size_t wcsnrtombs_l(char* to, const wchar_t** from, size_t characters, size_t size, mbstate_t* state,
                    locale_t locale);
size_t wcrtomb_l(char* to, wchar_t character, mbstate_t* state, locale_t locale);
size_t mbsnrtowcs_l(wchar_t* to, const char** from, size_t bytes, size_t size, mbstate_t* state,
                    locale_t locale);
size_t mbrtowc_l(wchar_t* to, const char* from, size_t size, mbstate_t* state, locale_t locale);
int mbtowc_l(wchar_t* to, const char* from, size_t size, locale_t locale);
int wcwidth_l(wchar_t character, locale_t locale);
size_t mbrlen_l(const char* from, size_t size, mbstate_t* state, locale_t locale);
lconv* localeconv_l(locale_t locale);
size_t mbsrtowcs_l(wchar_t* to, const char** from, size_t size, mbstate_t* state, locale_t locale);
float strtof_l(const char* from, char** end, locale_t locale);
double strtod_l(const char* from, char** end, locale_t locale);
long double strtold_l(const char* from, char** end, locale_t locale);
long long strtoll_l(const char* from, char** end, int base, locale_t locale);
unsigned long long strtoull_l(const char* from, char** end, int base, locale_t locale);
int snprintf_l(char* to, size_t size, locale_t locale, const char* format, ...);
int asprintf_l(char** to, locale_t locale, const char* format, ...);
int sscanf_l(const char* from, locale_t locale, const char* format, ...);
}
