#pragma once

// Operations the console performs on a context. The values are the console's own; an element's
// availableOperations() answers them or-ed together as an integer.
enum class OperationType : int {
    None = 0,
    Read = 0x20,
    Login = 0x20000,
    Logout = 0x40000,
};

constexpr int operationFlag(OperationType operation)
{
    return static_cast<int>(operation);
}
