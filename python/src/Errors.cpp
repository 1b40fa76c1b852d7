#include "python/src/Errors.h"

#include "Vault/Error.h"
#include "Vault/TableFile.h"
#include "Zam/TypeArgument.h"
#include "cliprint/Interrupt.h"
#include "programs/command/Errors.h"

#include <string>

namespace py = pybind11;

namespace kivPython {
namespace {

// As long as the interpreter.
struct Types {
   PyObject* error = nullptr;
   PyObject* type = nullptr;
   PyObject* range = nullptr;
   PyObject* parse = nullptr;
   PyObject* usage = nullptr;
   PyObject* refused = nullptr;
   PyObject* damage = nullptr;
};
Types types;

thread_local std::string damage;

class DamageMet : public std::runtime_error {
 public:
   using std::runtime_error::runtime_error;
};

PyObject* exception(py::module_& module, char const* name, char const* line, PyObject* base, PyObject* builtIn) {
   auto const bases =
       builtIn != nullptr ? py::make_tuple(py::handle(base), py::handle(builtIn)) : py::make_tuple(py::handle(base));
   PyObject* const type = PyErr_NewExceptionWithDoc((std::string("kiv.") + name).c_str(), line, bases.ptr(), nullptr);
   if (type == nullptr) {
      throw py::error_already_set();
   }
   module.add_object(name, type);
   return type;
}

void setInterrupt() {
   if (PyErr_CheckSignals() == 0) {
      PyErr_SetNone(PyExc_KeyboardInterrupt);
   }
}

void translate(std::exception_ptr thrown) {
   try {
      std::rethrow_exception(std::move(thrown));
   } catch (cliprint::SigIntException const&) {
      setInterrupt();
   } catch (Zam::TypeError const& error) {
      PyErr_SetString(types.type, error.what());
   } catch (Zam::ParseError const& error) {
      PyErr_SetString(types.parse, error.what());
   } catch (Zam::RangeError const& error) {
      PyErr_SetString(types.range, error.what());
   } catch (kiv::UsageError const& error) {
      PyErr_SetString(types.usage, error.what());
   } catch (kiv::Refusal const& error) {
      PyErr_SetString(types.refused, error.line("kiv").c_str());
   } catch (DamageMet const& error) {
      PyErr_SetString(types.damage, error.what());
   } catch (Vault::MountError const& error) {
      PyErr_SetString(types.damage, error.what());
   } catch (Vault::CorruptionError const& error) {
      PyErr_SetString(types.damage, error.what());
   } catch (py::builtin_exception const&) {
      throw;
   } catch (std::runtime_error const& error) {
      PyErr_SetString(types.refused, error.what());
   }
}

}  // namespace

void defineErrors(py::module_& module) {
   types.error = exception(module, "Error", "What this module fails with.", PyExc_Exception, nullptr);
   types.type = exception(module, "TypeError", "No such type, operation or argument, or one of another type.",
                          types.error, PyExc_TypeError);
   types.range = exception(module, "RangeError", "A value that its type cannot hold.", types.error, PyExc_ValueError);
   types.parse = exception(module, "ParseError", "A text that is not the form of its type.", types.range, nullptr);
   types.usage = exception(module, "UsageError", "No command, or a command with a wrong parameter.", types.error,
                           PyExc_ValueError);
   types.refused =
       exception(module, "Refused", "What was asked for is not there, or cannot be done now.", types.error, nullptr);
   types.damage =
       exception(module, "DamageError", "A table is damaged; what could be read is not all.", types.error, nullptr);
   py::register_exception_translator(&translate);
}

void watchDamage() {
   Vault::TableFile::damageReporterIs([](std::string_view message) {
      if (damage.empty()) {
         damage = message;
      }
   });
}

void forgetDamage() noexcept {
   damage.clear();
}

void throwDamage() {
   if (!damage.empty()) {
      throw DamageMet(damage);
   }
}

}  // namespace kivPython
