// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/memory.h"

#include <cstdint>
#include <type_traits>

/// The tags under which the kinds of stacks stand in the memory report.
template <class T>
constexpr const char *genStackTag = "(obj) genStack instance";
template <>
inline constexpr const char *genStackTag<double> = "(double) genStack instance";
template <>
inline constexpr const char *genStackTag<bool> = "(bool) genStack instance";
template <>
inline constexpr const char *genStackTag<int32_t> = "(int) genStack instance";
template <>
inline constexpr const char *genStackTag<uint32_t> = "(uint) genStack instance";

/// A stack of fixed capacity in tracked memory: of double, bool, int, uint or records. A push
/// on a full stack is dropped; a pop of an empty one gives zero, or for records the default.
template <class T>
class genStack
{
public:
    static constexpr bool isObject = !std::is_arithmetic_v<T>;

    explicit genStack(int32_t newCapacity, const T &whenEmpty = T())
        : entries(static_cast<T *>(umalloc(size_t(newCapacity) * sizeof(T), genStackTag<T>))),
          capacity(newCapacity)
    {
        if constexpr (isObject) {
            fallback = static_cast<T *>(umalloc(sizeof(T), "(obj) default instance"));
            if (fallback)
                *fallback = whenEmpty;
        }
    }
    ~genStack()
    {
        upfree(&entries);
        upfree(&fallback);
    }
    genStack(const genStack &) = delete;
    genStack &operator=(const genStack &) = delete;

    void push(const T &value)
    {
        if (entries && used < capacity)
            entries[used++] = value;
    }
    T pop() { return entries && used > 0 ? entries[--used] : empty(); }
    T peek() const { return entries && used > 0 ? entries[used - 1] : empty(); }
    int32_t count() const { return used; }
    void clear() { used = 0; }

private:
    T empty() const { return fallback ? *fallback : T(); }

    T *entries;
    T *fallback = nullptr; ///< of records alone
    int32_t capacity;
    int32_t used = 0;
};
