#pragma once

#include <memory>

// Owner of a heap array: freed when the owner goes or takes another array.
template <class T>
using auto_array = std::unique_ptr<T[]>;
