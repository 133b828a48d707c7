"""Puts a document together: dictionary, mining schema, output, transformations and machines."""

from __future__ import annotations

import re
from dataclasses import dataclass
from typing import Sequence
from xml.etree import ElementTree
from xml.etree.ElementTree import Element, SubElement
from xml.sax.saxutils import unescape

import numpy as np

from .columns import Column, Derived, Input
from .errors import ConversionError
from .machines import Machine, Model
from .text import checked, number
from .transformations import derived_field, in_order

NAMESPACE = "http://www.dmg.org/PMML-4_4"


@dataclass
class Target:
    """What is predicted: its field, and for a classification its type and the texts of classes."""

    name: str
    data_type: str = "double"
    classes: Sequence[str] = ()
    rescale: tuple[float, float] | None = None  # prediction = decision value * [0] + [1]

    @property
    def prediction(self) -> str:
        """The name of the output field."""
        return f"predicted_{self.name}"


def build(model: Model, target: Target, columns: Sequence[Column], description: str) -> Element:
    """The document of a model whose vectors have the given columns, without verification."""
    fields = in_order(columns)
    inputs = [f for f in fields if isinstance(f, Input)]
    if not inputs:
        raise ConversionError("no column of the table is used; fit the estimator to some")
    root = Element("PMML", xmlns=NAMESPACE, version="4.4")
    header = SubElement(root, "Header", description=checked(description))
    SubElement(header, "Application", name="svmscore")
    _dictionary(root, inputs, target)
    attributes = {"functionName": "classification" if target.classes else "regression"}
    if model.method:
        attributes["classificationMethod"] = model.method
    if model.algorithm:
        attributes["algorithmName"] = model.algorithm
    element = SubElement(root, "SupportVectorMachineModel", attributes)
    _mining_schema(element, inputs, target)
    _output(element, model, target)
    if target.rescale:
        factor, constant = target.rescale
        SubElement(
            SubElement(element, "Targets"),
            "Target",
            field=target.name,
            rescaleFactor=number(factor),
            rescaleConstant=number(constant),
        )
    derived = [f for f in fields if isinstance(f, Derived)]
    if derived:
        SubElement(element, "LocalTransformations").extend(derived_field(f) for f in derived)
    SubElement(element, model.kernel, {n: number(v) for n, v in model.parameters.items()})
    _vectors(element, model, columns)
    for machine in model.machines:
        _machine(element, machine, target)
    return root


def _data_field(
    dictionary: Element, name: str, data_type: str, values: Sequence[str] | None
) -> None:
    optype = "continuous" if values is None else "categorical"
    field = SubElement(dictionary, "DataField", name=name, optype=optype, dataType=data_type)
    for value in values or ():
        SubElement(field, "Value", value=value)


def _dictionary(root: Element, inputs: Sequence[Input], target: Target) -> None:
    dictionary = SubElement(root, "DataDictionary", numberOfFields=str(len(inputs) + 1))
    for field in inputs:
        _data_field(dictionary, field.name, field.type, field.values())
    _data_field(dictionary, target.name, target.data_type, target.classes or None)


def _mining_schema(model: Element, inputs: Sequence[Input], target: Target) -> None:
    schema = SubElement(model, "MiningSchema")
    for field in inputs:
        element = SubElement(schema, "MiningField", name=field.name, usageType="active")
        if field.is_categorical and field.strict is None:
            element.set("invalidValueTreatment", "asIs")
    SubElement(schema, "MiningField", name=target.name, usageType="target")


def _output(element: Element, model: Model, target: Target) -> None:
    """The prediction. A calibrated model declares no output: its probabilities are this system's,
    and readers that pass extensions over would fill the same fields with shares of votes."""
    if model.is_calibrated:
        return
    SubElement(
        SubElement(element, "Output"),
        "OutputField",
        name=target.prediction,
        optype="categorical" if target.classes else "continuous",
        dataType=target.data_type,
        feature="predictedValue",
    )


def _vectors(element: Element, model: Model, columns: Sequence[Column]) -> None:
    used = sorted({k for machine in model.machines for k, _ in machine.terms})
    dictionary = SubElement(element, "VectorDictionary", numberOfVectors=str(len(used)))
    fields = SubElement(dictionary, "VectorFields", numberOfFields=str(len(columns)))
    for column in columns:
        SubElement(fields, "FieldRef", field=column.name)
    for k in used:
        vector = model.vectors[k]
        present = np.flatnonzero(vector)
        if not len(present):
            present = np.array([0])  # readers differ about arrays without entries
        instance = SubElement(dictionary, "VectorInstance", id=f"v{k + 1}")
        array = SubElement(instance, "REAL-SparseArray", n=str(len(columns)))
        SubElement(array, "Indices").text = " ".join(str(i + 1) for i in present)
        SubElement(array, "REAL-Entries").text = " ".join(number(vector[i]) for i in present)


def _machine(element: Element, machine: Machine, target: Target) -> None:
    attributes = {}
    classes = target.classes
    if machine.target is not None:
        attributes["targetCategory"] = classes[machine.target]
    if machine.alternate is not None:
        attributes["alternateTargetCategory"] = classes[machine.alternate]
    if machine.threshold != 0.0:
        attributes["threshold"] = number(machine.threshold)
    svm = SubElement(element, "SupportVectorMachine", attributes)
    if machine.sigmoid:
        extension = SubElement(svm, "Extension", extender="svmscore")
        SubElement(
            extension,
            "ResponseCategory",
            response=attributes["targetCategory"],
            nonResponse=attributes["alternateTargetCategory"],
        )
        a, b = machine.sigmoid
        SubElement(extension, "ProbabilityParameters", A=number(a), B=number(b))
    count = str(len(machine.terms))
    vectors = SubElement(svm, "SupportVectors", numberOfSupportVectors=count)
    coefficients = SubElement(
        svm, "Coefficients", numberOfCoefficients=count, absoluteValue=number(machine.offset)
    )
    for k, coefficient in machine.terms:
        SubElement(vectors, "SupportVector", vectorId=f"v{k + 1}")
        SubElement(coefficients, "Coefficient", value=number(coefficient))


def serialise(root: Element) -> str:
    """The text of a document; a vector, an extension and a row take one line each."""
    _indent(root, "\n")
    body = ElementTree.tostring(root, encoding="unicode")
    return f'<?xml version="1.0" encoding="UTF-8"?>\n{_ESCAPED_TEXT.sub(_cdata, body)}\n'


# Texts of elements; in a serialised attribute no character < or > is left.
_ESCAPED_TEXT = re.compile(">([^<>]*&[^<>]*)<")


def _cdata(found: re.Match[str]) -> str:
    """A text with entities as CDATA: one reader keeps only what follows the last entity."""
    text = unescape(found.group(1))
    return found.group() if "]]>" in text else f"><![CDATA[{text}]]><"


def _indent(element: Element, margin: str) -> None:
    if not len(element) or element.tag in ("VectorInstance", "Extension", "row"):
        return
    inner = margin + " "
    element.text = inner
    for child in element:
        _indent(child, inner)
        child.tail = inner
    element[-1].tail = margin
