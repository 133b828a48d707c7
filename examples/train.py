#!/usr/bin/env python3
"""Trains the example models and writes, for each, NAME/model.pmml, NAME/cases.csv (rows that the
training did not see, with the true answer as the last column) and NAME/expected.csv (what
scikit-learn itself says about them).

Needs Debian's python3-sklearn; users and tests need only what it writes. The run is repeatable:
splits and calibration have fixed seeds. Before it ends, each model is read back from its file,
evaluated here, and compared with scikit-learn; any disagreement stops the script.
"""

import csv
import pathlib
import xml.etree.ElementTree as ET

import numpy as np
from sklearn import datasets
from sklearn.model_selection import cross_val_predict, train_test_split
from sklearn.svm import SVC, SVR

HERE = pathlib.Path(__file__).resolve().parent
NAMESPACE = "http://www.dmg.org/PMML-4_4"
EXTENDER = "svmscore"


def number(value):
    """The shortest text that reads back to the same double; whole numbers without '.0'."""
    value = float(value)
    return str(int(value)) if value == int(value) and abs(value) < 1e15 else repr(value)


class Field:
    """One input column: how it is declared, and the vector coordinate that it becomes."""

    def __init__(self, name, values, kind="continuous"):
        self.name = name
        self.values = np.asarray(values, dtype=float)
        self.kind = kind  # "continuous", "integer", "standardised" or "indicator"

    def fit(self, rows):
        """Learns from the training rows what the coordinate needs."""
        if self.kind == "standardised":
            low = self.values[rows].mean()
            # The model's file holds two points of the line; the coordinate is computed from these.
            self.points = (low, low + self.values[rows].std())
        elif self.kind == "indicator":
            self.categories = sorted({number(v) for v in self.values})
        return self

    def coordinate(self):
        if self.kind == "standardised":
            return (self.values - self.points[0]) / (self.points[1] - self.points[0])
        if self.kind == "indicator":
            return (self.values == float(self.categories[-1])).astype(float)
        return self.values

    def declare(self, dictionary):
        if self.kind == "indicator":
            declare_categories(dictionary, self.name, self.categories)
        else:
            ET.SubElement(dictionary, "DataField", name=self.name, optype="continuous",
                          dataType="integer" if self.kind == "integer" else "double")

    def refer(self, vector_fields):
        if self.kind == "indicator":
            ET.SubElement(vector_fields, "CategoricalPredictor", name=self.name,
                          value=self.categories[-1], coefficient="1")
        else:
            standardised = self.kind == "standardised"
            ET.SubElement(vector_fields, "FieldRef",
                          field=f"z_{self.name}" if standardised else self.name)

    def derive(self, transformations):
        if self.kind != "standardised":
            return
        derived = ET.SubElement(transformations, "DerivedField", name=f"z_{self.name}",
                                optype="continuous", dataType="double")
        norm = ET.SubElement(derived, "NormContinuous", field=self.name)
        ET.SubElement(norm, "LinearNorm", orig=number(self.points[0]), norm="0")
        ET.SubElement(norm, "LinearNorm", orig=number(self.points[1]), norm="1")


def declare_categories(dictionary, name, categories):
    field = ET.SubElement(dictionary, "DataField", name=name, optype="categorical",
                          dataType="string")
    for category in categories:
        ET.SubElement(field, "Value", value=category)


def pairs_of(count):
    return [(i, j) for i in range(count) for j in range(i + 1, count)]


def machine_terms(model, pair=None):
    """(support vector position, coefficient) of one machine; a pair's machine is positive for its
    first class. Terms of coefficient 0 are left out."""
    dual = model._dual_coef_  # signs as the solver has them, for two classes as well
    if pair is None:
        return [(k, c) for k, c in enumerate(dual[0]) if c != 0]
    i, j = pair
    starts = np.concatenate(([0], np.cumsum(model.n_support_)))
    terms = [(k, dual[j - 1, k]) for k in range(starts[i], starts[i + 1])]
    terms += [(k, dual[i, k]) for k in range(starts[j], starts[j + 1])]
    return [(k, c) for k, c in terms if c != 0]


def add_vectors(parent, fields, vectors, used):
    dictionary = ET.SubElement(parent, "VectorDictionary", numberOfVectors=str(len(used)))
    vector_fields = ET.SubElement(dictionary, "VectorFields", numberOfFields=str(len(fields)))
    for field in fields:
        field.refer(vector_fields)
    for k in used:
        present = np.flatnonzero(vectors[k])
        if not len(present):
            raise SystemExit("a support vector without entries cannot be written")
        instance = ET.SubElement(dictionary, "VectorInstance", id=f"v{k}")
        array = ET.SubElement(instance, "REAL-SparseArray", n=str(len(fields)))
        ET.SubElement(array, "Indices").text = " ".join(str(i + 1) for i in present)
        ET.SubElement(array, "REAL-Entries").text = " ".join(number(vectors[k, i]) for i in present)


def add_machine(parent, terms, intercept, extension, **categories):
    machine = ET.SubElement(parent, "SupportVectorMachine", **categories)
    if extension is not None:
        machine.append(extension)
    vectors = ET.SubElement(machine, "SupportVectors", numberOfSupportVectors=str(len(terms)))
    coefficients = ET.SubElement(machine, "Coefficients", numberOfCoefficients=str(len(terms)),
                                 absoluteValue=number(intercept))
    for k, coefficient in terms:
        ET.SubElement(vectors, "SupportVector", vectorId=f"v{k}")
        ET.SubElement(coefficients, "Coefficient", value=number(coefficient))


def sigmoid_extension(first, second, a, b):
    extension = ET.Element("Extension", extender=EXTENDER)
    ET.SubElement(extension, "ResponseCategory", response=first, nonResponse=second)
    ET.SubElement(extension, "ProbabilityParameters", A=number(a), B=number(b))
    return extension


def deviation_extension(scale):
    extension = ET.Element("Extension", extender=EXTENDER)
    ET.SubElement(extension, "StandardDeviation").text = number(scale)
    return extension


def document(fields, target, categories, description):
    """The PMML element with its dictionary and transformations, and its model element."""
    root = ET.Element("PMML", xmlns=NAMESPACE, version="4.4")
    header = ET.SubElement(root, "Header", description=description)
    ET.SubElement(header, "Application", name="examples/train.py", version="1.0")
    dictionary = ET.SubElement(root, "DataDictionary", numberOfFields=str(len(fields) + 1))
    for field in fields:
        field.declare(dictionary)
    if categories:
        declare_categories(dictionary, target, categories)
    else:
        ET.SubElement(dictionary, "DataField", name=target, optype="continuous", dataType="double")
    if any(field.kind == "standardised" for field in fields):
        transformations = ET.SubElement(root, "TransformationDictionary")
        for field in fields:
            field.derive(transformations)
    attributes = {"functionName": "classification" if categories else "regression"}
    if categories:
        attributes |= {"classificationMethod": "OneAgainstOne", "maxWins": "true"}
    model = ET.SubElement(root, "SupportVectorMachineModel", **attributes)
    schema = ET.SubElement(model, "MiningSchema")
    for field in fields:
        ET.SubElement(schema, "MiningField", name=field.name, usageType="active")
    ET.SubElement(schema, "MiningField", name=target, usageType="target")
    return root, model


def write_document(root, path):
    ET.indent(root, space=" ")
    text = ET.tostring(root, encoding="unicode")
    # One line for each support vector and each extension keeps the file small and readable.
    for tag in ("VectorInstance", "Extension"):
        parts = text.split(f"<{tag} ")
        for n, part in enumerate(parts[1:], 1):
            head, tail = part.split(f"</{tag}>", 1)
            parts[n] = "".join(line.strip() for line in head.split("\n")) + f"</{tag}>" + tail
        text = f"<{tag} ".join(parts)
    path.write_text('<?xml version="1.0" encoding="UTF-8"?>\n' + text + "\n", encoding="utf-8")


def write_csv(path, header, rows):
    with path.open("w", newline="", encoding="utf-8") as file:
        writer = csv.writer(file, lineterminator="\n")
        writer.writerow(header)
        writer.writerows(rows)


def evaluate(path, points):
    """Decision values of the machines of a written file, at the given points."""
    tag = lambda name: f"{{{NAMESPACE}}}{name}"
    model = ET.parse(path).getroot().find(tag("SupportVectorMachineModel"))
    gamma = float(model.find(tag("RadialBasisKernelType")).get("gamma"))
    vectors = {}
    for instance in model.iter(tag("VectorInstance")):
        vector = np.zeros(points.shape[1])
        array = instance.find(tag("REAL-SparseArray"))
        indices = [int(i) - 1 for i in array.find(tag("Indices")).text.split()]
        vector[indices] = [float(v) for v in array.find(tag("REAL-Entries")).text.split()]
        vectors[instance.get("id")] = vector
    values = []
    for machine in model.iter(tag("SupportVectorMachine")):
        coefficients = machine.find(tag("Coefficients"))
        value = np.full(len(points), 0.0)
        names = [v.get("vectorId") for v in machine.iter(tag("SupportVector"))]
        for name, coefficient in zip(names, coefficients.iter(tag("Coefficient")), strict=True):
            distance = ((points - vectors[name]) ** 2).sum(axis=1)
            value += float(coefficient.get("value")) * np.exp(-gamma * distance)
        values.append(value + float(coefficients.get("absoluteValue")))
    return np.array(values).T


def require_close(what, ours, theirs, tolerance):
    difference = np.max(np.abs(np.asarray(ours) - np.asarray(theirs)))
    print(f"  {what}: largest difference {difference:.2g}")
    if not difference <= tolerance:
        raise SystemExit(f"{what} differ by more than {tolerance}")


def sigmoid(decisions, a, b):
    return np.clip(1 / (1 + np.exp(decisions * a + b)), 1e-7, 1 - 1e-7)


def couple(pairwise, count):
    """Class probabilities of one case from those of its pairs: the minimum of p'Qp over
    probabilities that add up to 1 (Wu, Lin and Weng, 2004), by its fixed-point iteration."""
    r = np.zeros((count, count))
    for (i, j), p in zip(pairs_of(count), pairwise):
        r[i, j], r[j, i] = p, 1 - p
    q = np.diag((r ** 2).sum(axis=0)) - r * r.T
    p = np.full(count, 1 / count)
    for _ in range(100):
        for t in range(count):
            p[t] += (p @ q @ p - q[t] @ p) / q[t, t]
            p /= p.sum()
        if np.max(np.abs(q @ p - p @ q @ p)) < 0.005 / count:
            break
    return p


def input_cells(fields, row):
    return [number(field.values[row]) for field in fields]


def classification(name, fields, target, categories, answers, test_size, description, train_size=None,
                   **parameters):
    print(name)
    folder = HERE / name
    folder.mkdir(exist_ok=True)
    train, test = train_test_split(np.arange(len(answers)), test_size=test_size,
                                   train_size=train_size, random_state=1, stratify=answers)
    points = np.column_stack([field.fit(train).coordinate() for field in fields])
    model = SVC(kernel="rbf", decision_function_shape="ovo", random_state=1, **parameters)
    model.fit(points[train], answers[train])

    root, element = document(fields, target, categories, description)
    ET.SubElement(element, "RadialBasisKernelType", gamma=number(model._gamma))
    pairs = pairs_of(len(categories))
    terms = [machine_terms(model, pair) for pair in pairs]
    add_vectors(element, fields, model.support_vectors_, sorted({k for t in terms for k, _ in t}))
    for m, (i, j) in enumerate(pairs):
        extension = None
        if model.probability:
            extension = sigmoid_extension(categories[i], categories[j], model.probA_[m],
                                          model.probB_[m])
        add_machine(element, terms[m], model._intercept_[m], extension,
                    targetCategory=categories[i], alternateTargetCategory=categories[j])
    write_document(root, folder / "model.pmml")
    write_csv(folder / "cases.csv", [field.name for field in fields] + [target],
              [input_cells(fields, row) + [categories[answers[row]]] for row in test])

    decisions = model.decision_function(points[test]).reshape(len(test), -1)
    if len(categories) == 2:
        decisions = -decisions  # scikit-learn's own is positive for the second of two classes
    require_close("decision values", evaluate(folder / "model.pmml", points[test]), decisions,
                  1e-12)
    header, columns = expected_classes(model, categories, points[test], decisions)
    write_csv(folder / "expected.csv", header,
              [[cell if isinstance(cell, str) else number(cell) for cell in row]
               for row in zip(*columns)])
    right = np.mean([columns[0][n] == categories[answers[row]] for n, row in enumerate(test)])
    print(f"  {len(model.support_)} support vectors, {100 * right:.1f} % of {len(test)} right")


def expected_classes(model, categories, points, decisions):
    """The columns of expected.csv. prediction and probability(...) are what the model's file means;
    the others are for the reader."""
    names = lambda positions: [categories[k] for k in positions]
    voted = names(model.predict(points))
    header, columns = ["prediction"], []
    if not model.probability:
        columns.append(voted)
    else:
        own = model.predict_proba(points)
        pairwise = sigmoid(decisions, model.probA_, model.probB_)
        if len(categories) == 2:
            # Its figure for two classes comes out of an iteration that stops early; the sigmoid of
            # its decision value is what that iteration starts from.
            probabilities = np.column_stack([pairwise[:, 0], 1 - pairwise[:, 0]])
            require_close("predict_proba and the sigmoid", own, probabilities, 0.005)
        else:
            probabilities = own
            require_close("probabilities", [couple(r, len(categories)) for r in pairwise], own,
                          1e-7)
        columns.append(names(probabilities.argmax(axis=1)))
        header += [f"probability({category})" for category in categories]
        columns += list(probabilities.T)
        if len(categories) == 2:
            header += [f"predict_proba({category})" for category in categories]
            columns += list(own.T)
        header.append("voted")
        columns.append(voted)
    header += [f"decision({categories[i]}|{categories[j]})" for i, j in pairs_of(len(categories))]
    return header, columns + list(decisions.T)


def regression(name, fields, target, answers, test_size, description, **parameters):
    print(name)
    folder = HERE / name
    folder.mkdir(exist_ok=True)
    train, test = train_test_split(np.arange(len(answers)), test_size=test_size, random_state=1)
    points = np.column_stack([field.fit(train).coordinate() for field in fields])
    model = SVR(kernel="rbf", **parameters).fit(points[train], answers[train])
    # The scale of a Laplace distribution of errors: their mean size, on rows left out in turn.
    left_out = cross_val_predict(SVR(kernel="rbf", **parameters), points[train], answers[train],
                                 cv=5)
    scale = np.mean(np.abs(left_out - answers[train]))

    root, element = document(fields, target, None, description)
    ET.SubElement(element, "RadialBasisKernelType", gamma=number(model._gamma))
    terms = machine_terms(model)
    add_vectors(element, fields, model.support_vectors_, [k for k, _ in terms])
    add_machine(element, terms, model._intercept_[0], deviation_extension(scale))
    write_document(root, folder / "model.pmml")
    write_csv(folder / "cases.csv", [field.name for field in fields] + [target],
              [input_cells(fields, row) + [number(answers[row])] for row in test])

    predictions = model.predict(points[test])
    require_close("predictions", evaluate(folder / "model.pmml", points[test])[:, 0], predictions,
                  1e-11)
    write_csv(folder / "expected.csv", ["prediction"], [[number(p)] for p in predictions])
    error = np.mean(np.abs(predictions - answers[test]))
    print(f"  {len(terms)} support vectors, mean absolute error {error:.1f} on {len(test)} rows, "
          f"scale {scale:.1f}")


def main():
    iris = datasets.load_iris()
    classification(
        "iris", [Field(n.replace(" (cm)", "").replace(" ", "_"), c)
                 for n, c in zip(iris.feature_names, iris.data.T)],
        "species", list(iris.target_names), iris.target, 50,
        "Species of iris by the size of its leaves", C=1.0, gamma=0.5)

    diabetes = datasets.load_diabetes(scaled=False)
    names = ["age", "sex", "bmi", "blood_pressure", "total_cholesterol", "ldl", "hdl",
             "cholesterol_ratio", "log_triglycerides", "glucose"]
    regression(
        "diabetes", [Field(n, c, "indicator" if n == "sex" else "standardised")
                     for n, c in zip(names, diabetes.data.T)],
        "progression", diabetes.target, 100,
        "Progression of diabetes one year after the measurements", C=50.0, gamma=0.03,
        epsilon=10.0)

    digits = datasets.load_digits()
    classification(
        "digits", [Field(f"pixel_{k // 8}_{k % 8}", c, "integer")
                   for k, c in enumerate(digits.data.T)],
        "digit", [str(d) for d in digits.target_names], digits.target, 200,
        "Handwritten digits of 8 by 8 pixels, with probabilities", train_size=600, C=1.0,
        gamma=0.001, probability=True)

    cancer = datasets.load_breast_cancer()
    classification(
        "tumour", [Field(n.replace(" ", "_"), c, "standardised")
                   for n, c in zip(cancer.feature_names[:10], cancer.data.T)],
        "diagnosis", list(cancer.target_names), cancer.target, 169,
        "Malignant or benign breast tumours by their cells, with probabilities", C=1.0, gamma=0.1,
        probability=True)


if __name__ == "__main__":
    main()
