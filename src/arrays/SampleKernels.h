#pragma once

#include <cstddef>

/// Move the samples of a block of `lines` lines of `length` elements, one behind the other, to other places. Source and
/// target do not overlap. A T is an unsigned number of 8, 16, 32 or 64 bits: elements are moved as they are.
namespace Qor::Tivor::SampleKernels {

/// The lines in opposite order.
template <class T>
void ReverseLines(const T* source, T* target, std::size_t lines, std::size_t length);
/// The elements of each line in opposite order. A block of one line: all elements.
template <class T>
void ReverseElements(const T* source, T* target, std::size_t lines, std::size_t length);
/// Makes lines of what were columns: the target has `length` lines of `lines` elements. The lines of the source are
/// taken in opposite order where `reverseLines`, its elements where `reverseElements`.
template <class T>
void Transpose(const T* source, T* target, std::size_t lines, std::size_t length, bool reverseLines,
               bool reverseElements);
/// The first `length` elements of each of `lines` lines that begin `stride` elements apart.
template <class T>
void CopyLines(const T* source, std::size_t stride, T* target, std::size_t lines, std::size_t length);

} // namespace Qor::Tivor::SampleKernels
