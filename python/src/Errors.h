#pragma once

#include <pybind11/pybind11.h>

// What the library throws, as Python's exceptions. All but an interrupt and a fault of the interpreter are a kiv.Error:
//
//    Error
//       TypeError (also the built-in one)      no such type, operation or argument, or one of another type
//       RangeError (also ValueError)           a value that its type cannot hold
//          ParseError                          a text that is not the form of its type
//       UsageError (also ValueError)           no command, or a command with a wrong parameter
//       Refused                                what was asked for is not there, or cannot be done now
//       DamageError                            a table is damaged; what could be read is not all
namespace kivPython {

void defineErrors(pybind11::module_& module);

// Damage that a table tells of goes to the thread that met it.
void watchDamage();
void forgetDamage() noexcept;
// Throws a DamageError when the thread has met some since it forgot.
void throwDamage();

}  // namespace kivPython
