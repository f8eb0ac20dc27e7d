#pragma once

#include <stddef.h>
#include <sys/cdefs.h>

__BEGIN_DECLS
void* memchr(const void* bytes, int byte, size_t size);
int memcmp(const void* left, const void* right, size_t size);
void* memcpy(void* to, const void* from, size_t size);
void* memmove(void* to, const void* from, size_t size);
void* memset(void* bytes, int byte, size_t size);
size_t strlen(const char* text);
int strcmp(const char* left, const char* right);
int strncmp(const char* left, const char* right, size_t size);
int strcoll(const char* left, const char* right);
size_t strxfrm(char* to, const char* from, size_t size);
char* strchr(const char* text, int character);
char* strrchr(const char* text, int character);
char* strpbrk(const char* text, const char* characters);
char* strstr(const char* text, const char* part);
size_t strspn(const char* text, const char* characters);
size_t strcspn(const char* text, const char* characters);
char* strcpy(char* to, const char* from);
char* strncpy(char* to, const char* from, size_t size);
char* strcat(char* to, const char* from);
char* strncat(char* to, const char* from, size_t size);
char* strtok(char* text, const char* separators);
char* strerror(int number) __asm("_strerror$UNIX2003");
int strerror_r(int number, char* text, size_t size);
__END_DECLS
