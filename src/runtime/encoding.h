#pragma once

// Type-encoding strings for method signatures, in the host's notation:
// "v" void, "B" bool, "i" int, "d" double, "@" an object, "*" a C string,
// "^" + pointee for other pointers. A method's encoding is the return type's,
// then "@:" for the receiver and the selector, then each argument's.

#include <string>
#include <type_traits>

namespace lexicorn::runtime {

template <class T>
std::string encodingOf()
{
    using U = std::remove_cvref_t<T>;
    if constexpr (std::is_void_v<U>)
        return "v";
    else if constexpr (std::is_same_v<U, bool>)
        return "B";
    else if constexpr (std::is_same_v<U, char> || std::is_same_v<U, signed char>)
        return "c";
    else if constexpr (std::is_same_v<U, unsigned char>)
        return "C";
    else if constexpr (std::is_same_v<U, short>)
        return "s";
    else if constexpr (std::is_same_v<U, unsigned short>)
        return "S";
    else if constexpr (std::is_same_v<U, int>)
        return "i";
    else if constexpr (std::is_same_v<U, unsigned int>)
        return "I";
    // long is 64 bits on every platform we build for, like long long.
    else if constexpr (std::is_same_v<U, long> || std::is_same_v<U, long long>)
        return "q";
    else if constexpr (std::is_same_v<U, unsigned long> || std::is_same_v<U, unsigned long long>)
        return "Q";
    else if constexpr (std::is_same_v<U, float>)
        return "f";
    else if constexpr (std::is_same_v<U, double>)
        return "d";
    else if constexpr (std::is_same_v<U, long double>)
        return "D";
    else if constexpr (std::is_same_v<U, char*> || std::is_same_v<U, const char*>)
        return "*";
    else if constexpr (std::is_pointer_v<U>) {
        // Appending rather than "^" + string: GCC 12 at -O3 warns falsely
        // about overlapping copies in the operator+ form.
        std::string encoding = "^";
        encoding += encodingOf<std::remove_pointer_t<U>>();
        return encoding;
    }
    else if constexpr (std::is_enum_v<U>)
        return encodingOf<std::underlying_type_t<U>>();
    // Strings, shared pointers, containers and host objects all travel as objects.
    // Struct-like values (points, rectangles) need an explicit encoding.
    else if constexpr (std::is_class_v<U>)
        return "@";
    else
        return "?";
}

template <class R, class... Args>
std::string methodEncoding()
{
    return encodingOf<R>() + "@:" + (std::string() + ... + encodingOf<Args>());
}

}  // namespace lexicorn::runtime
