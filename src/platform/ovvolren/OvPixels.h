#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

/// Leaves elements that nobody gives a value as they are: what is read over at once need not be zero before.
template <class T>
struct OvUninitialised : std::allocator<T>
{
    template <class U>
    struct rebind
    {
        using other = OvUninitialised<U>;
    };

    template <class U>
    void construct(U* inPlace) noexcept(std::is_nothrow_default_constructible_v<U>)
    {
        ::new (static_cast<void*>(inPlace)) U;
    }
    template <class U, class... Args>
    void construct(U* inPlace, Args&&... inArgs)
    {
        ::new (static_cast<void*>(inPlace)) U(std::forward<Args>(inArgs)...);
    }
};

using OvBytes = std::vector<unsigned char, OvUninitialised<unsigned char>>;

/// How the pixels of one image lie in memory: row by row, from the upper left, without gaps.
struct OvPixelFormat
{
    enum Type
    {
        UInt8,
        UInt16,
        Int16,
        UInt32,
        Int32,
        Float32,
        Rgb24, ///< Three bytes each: red, green, blue.
    };

    Type type = UInt16;
    int columns = 0;
    int rows = 0;

    std::size_t bytesPerPixel() const;
    /// Of the whole image.
    std::size_t bytes() const { return bytesPerPixel() * std::size_t(columns) * std::size_t(rows); }

    bool operator==(const OvPixelFormat&) const = default;
};

/// The pixels of one image.
struct OvPixels
{
    OvPixelFormat format;
    OvBytes bytes;

    /// The least and the greatest value that is not padding; 0 and 0 in a colour image, or when all is
    /// padding.
    double least = 0;
    double greatest = 0;

    template <class T>
    const T* as() const
    {
        return reinterpret_cast<const T*>(bytes.data());
    }
    template <class T>
    T* as()
    {
        return reinterpret_cast<T*>(bytes.data());
    }
};

/// Calls \a inFunction with a null pointer to the C++ type of a pixel. Colour pixels are no numbers: nothing
/// is called for them.
template <class Function>
void withPixelType(OvPixelFormat::Type inType, Function inFunction)
{
    switch (inType) {
    case OvPixelFormat::UInt8:
        return inFunction(static_cast<const std::uint8_t*>(nullptr));
    case OvPixelFormat::UInt16:
        return inFunction(static_cast<const std::uint16_t*>(nullptr));
    case OvPixelFormat::Int16:
        return inFunction(static_cast<const std::int16_t*>(nullptr));
    case OvPixelFormat::UInt32:
        return inFunction(static_cast<const std::uint32_t*>(nullptr));
    case OvPixelFormat::Int32:
        return inFunction(static_cast<const std::int32_t*>(nullptr));
    case OvPixelFormat::Float32:
        return inFunction(static_cast<const float*>(nullptr));
    case OvPixelFormat::Rgb24:
        return;
    }
}
