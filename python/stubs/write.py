"""Writes the stub of the extension: what head.pyi says, and a class and a constructor for each registered type.

usage: write.py OUTPUT, with the package on PYTHONPATH
"""

import keyword
import pathlib
import sys

NUMBERS = {"bool": "bool", "double": "float", "Zam::String": "str"}
NUMBERS |= {name: "int" for name in ("U8", "U16", "U32", "U64", "S32", "S64")}


def class_name(name):
    return name.replace("::", "_")


class Stubs:
    def __init__(self, kiv):
        self.types = {name: kiv.describe(name) for name in kiv.types()}

    def of_type(self, name):
        """What a value of the type is in Python."""
        if name in NUMBERS:
            return NUMBERS[name]
        if name == "nothing":
            return "None"
        if name not in self.types:
            return "Any"
        kind = self.types[name]["kind"]
        return "str" if kind in ("string", "enumeration") else class_name(name)

    def taken(self, name):
        """What may be given for it."""
        python = self.of_type(name)
        if name in NUMBERS or python in ("str", "Any"):
            return python
        if self.types[name]["kind"] == "entity":
            return "Object | None"
        return f"{python} | str | int | _Address"

    def read(self, use):
        if use["kind"] == "map":
            return f"Mapping[{self.of_type(use['key'])}, {self.of_type(use['type'])}]"
        if use["kind"] in ("set", "list"):
            return f"{'Set' if use['kind'] == 'set' else 'Sequence'}[{self.of_type(use['type'])}]"
        if use["kind"] == "entity":
            return f"{self.of_type(use['type'])} | None"
        return self.of_type(use["type"])

    def written(self, use):
        if use["kind"] == "map":
            return f"collections.abc.Mapping[Any, {self.taken(use['type'])}]"
        if use["kind"] in ("set", "list"):
            return f"collections.abc.Iterable[{self.taken(use['type'])}]"
        return self.taken(use["type"])

    def parameters(self, signature, default=""):
        """Of a function; those without a usable name go by their position."""
        parameters = signature["parameters"]
        named = all(name and not keyword.iskeyword(name) for name, _ in parameters)
        return named, [
            f"{name if named else f'__a{place}'}: {self.written(use)}{default if named else ''}"
            for place, (name, use) in enumerate(parameters)
        ]

    def operation(self, operation, attributes):
        """The lookup of a collection has the name of the attribute, which a script sees."""
        if operation["name"] in attributes:
            return
        _, parameters = self.parameters(operation)
        result = self.read(operation["result"])
        yield f"    def {operation['name']}({', '.join(['self', *parameters])}) -> {result}: ..."

    def class_of(self, described):
        yield f"class {class_name(described['name'])}(Object):"
        for name, attribute in described["attributes"].items():
            read = self.read(attribute["result"])
            if attribute["settable"]:
                yield f"    {name}: _Attribute[{read}, {self.written(attribute['result'])}]"
            else:
                yield f"    @property\n    def {name}(self) -> {read}: ..."
        for operation in described["operations"].values():
            yield from self.operation(operation, described["attributes"])
        yield "    pass"

    def constructors(self, described):
        """One that may leave out what it names serves for those with fewer arguments."""
        made = [self.parameters(each, " = ...") for each in described["constructors"]]
        largest = max((parameters for named, parameters in made if named), key=len, default=None)
        kept = [parameters for named, parameters in made if not named or parameters is largest]
        for parameters in kept:
            arguments = ", ".join([f'name: Literal["{described["name"]}"]', *parameters])
            yield f"@overload\ndef new({arguments}) -> {class_name(described['name'])}: ..."

    def all(self):
        shown = [each for name, each in self.types.items() if name not in NUMBERS and self.of_type(name) != "str"]
        for described in shown:
            yield from self.class_of(described)
        for described in shown:
            yield from self.constructors(described)
        for described in shown:
            if described["kind"] == "value":
                name = described["name"]
                yield f'@overload\ndef parse(name: Literal["{name}"], text: str) -> {class_name(name)}: ...'
        yield "@overload\ndef parse(name: str, text: str) -> Any: ..."


def main():
    output = pathlib.Path(sys.argv[1])
    import kiv

    head = (pathlib.Path(__file__).parent / "head.pyi").read_text()
    output.write_text(head + "\n" + "\n".join(Stubs(kiv).all()) + "\n")


if __name__ == "__main__":
    main()
