// Documents that break no rule, or whose faults show only in numbers, tables and records.
#include "tests/doctor/patients.h"

namespace svmscore::app {
namespace {

// Another expression for the derived field `band`, and other constants that it is compared with.
Edits Band(const std::string& expression, const std::string& constants) {
  return {"*<Discretize[^]*</Discretize>",
          expression,
          "'equal'",
          "'isIn'",
          "*<Constant dataType='string'>young</Constant>",
          constants};
}

const std::string kAll =
    "<Constant>a</Constant><Constant>b</Constant><Constant>c</Constant><Constant>d</Constant>";
const std::string kBins =
    "<Discretize field='age' defaultValue='c' mapMissingTo='d'><DiscretizeBin binValue='a'>"
    "<Interval closure='openOpen' rightMargin='9'/></DiscretizeBin><DiscretizeBin binValue='b'>"
    "<Interval closure='openOpen' leftMargin='9'/></DiscretizeBin></Discretize>";
const std::string kTable =
    "<MapValues outputColumn='o' defaultValue='c' mapMissingTo='d'><FieldColumnPair field='sex' "
    "column='i'/><InlineTable><row><i>Male</i><o>a</o></row><row><i>Female</i><o>b</o></row>"
    "</InlineTable></MapValues>";

}  // namespace

std::vector<Patient> SuspicionPatients() {
  return {
      {"", {}},
      {"", {}, "iris"},
      {"", {}, "tumour"},
      {"", {}, "diabetes"},
      // The rest of a refused document is still checked.
      {"refused at SupportVectorMachineModel, unlisted-category at NormDiscrete",
       {"functionName", "isScorable='false' functionName", "'Male'/></D", "'male'/></D"}},
      {"verification-disagrees at ModelVerification",
       {"</SupportVectorMachine>",
        "</SupportVectorMachine><ModelVerification><VerificationFields><VerificationField "
        "field='age'/><VerificationField field='sex'/><VerificationField "
        "field='grade'/><VerificationField field='size'/><VerificationField "
        "field='y'/></VerificationFields><InlineTable><row><age>25</age><sex>Male</sex><grade>B</"
        "grade><size>0.5</size><y>no</y></row></InlineTable></ModelVerification>"}},
      {"verification-unreadable at ModelVerification",
       {"</SupportVectorMachine>", "</SupportVectorMachine><ModelVerification/>"}},
      {"", Band("<Constant>a</Constant>", "<Constant>a</Constant>")},
      {"unlisted-category at Constant", Band("<Constant>a</Constant>", "<Constant>b</Constant>")},
      {"", Band(kBins, kAll)},
      {"unlisted-category at Constant", Band(kBins, kAll + "<Constant>e</Constant>")},
      {"", Band(kTable, kAll)},
      {"unlisted-category at Constant", Band(kTable, kAll + "<Constant>e</Constant>")},
      {"unlisted-category at Constant", {">young</Constant>", ">Young</Constant>"}},
      {"unmapped-category at MapValues, unlisted-table-key at row", {"<g>A</g>", "<g>a</g>"}},
      {"unmapped-category at MapValues", {"<n>2</n>", ""}},
      // With a default, a table need not list every category.
      {"unlisted-table-key at row",
       {"<g>A</g>", "<g>C</g>", "'n' dataType", "'n' defaultValue='0' dataType"}},
      // Values that are not listed may occur if invalid values are used as they are.
      {"",
       {"'sex' value='Male'", "'sex' value='male'", "<MiningField name='sex'/>",
        "<MiningField name='sex' invalidValueTreatment='asIs'/>"}},
      {"inactive-field at MiningField",
       {"<MiningField name='sex'/>", "<MiningField name='sex' usageType='supplementary'/>"}},
      {"unused-field at MiningField", {"<FieldRef field='size'/>", "<FieldRef field='age_n'/>"}},
      {"unused-derived-field at DerivedField",
       {"</LocalTransformations>",
        "<DerivedField name='rest' optype='continuous' dataType='double'><FieldRef "
        "field='size'/></DerivedField></LocalTransformations>"}},
      {"constant-field at VectorFields",
       {"1 2 1 0.5<", "1 0 1 0.5<", "<Indices>1 3 5<", "<Indices>1 4 5<"}},
      {"field-dominates at VectorFields",
       {"1 2 1 0.5<", "1 2000 1 0.5<", "gamma='0.5'", "gamma='1e-6'"}},
      {"indicator-not-0-or-1 at FieldRef",
       {"-0.5 1 2 1", "-0.5 1.3 2 1", "0.25 1 1", "0.25 -0.7 1"}},
      {"vector-outside-interval at FieldRef",
       {"1 2 1 0.5<", "1 2 1 7<", "0.25 1 1<", "0.25 1 -6<"}},
      {"refused at Array",
       {"numberOfVectors='3'", "", "</VectorDictionary>",
        "<VectorInstance id='d'><Array>1 2 3 4</Array></VectorInstance></VectorDictionary>"}},
      {"count-disagrees at Array, dense-array at Array, unused-vector at VectorInstance",
       {"numberOfVectors='3'", "", "</VectorDictionary>",
        "<VectorInstance id='d'><Array n='6'>1 2 3 4 "
        "5</Array></VectorInstance></VectorDictionary>"}},
      {"refused at REAL-Entries", {"<Indices>1 3 5<", "<Indices>1 3<"}},
      {"unused-vector at VectorInstance",
       {"numberOfVectors='3'", "", "</VectorDictionary>",
        "<VectorInstance id='d'><REAL-SparseArray n='5'/></VectorInstance></VectorDictionary>"}},
      {"unknown-kernel-attribute at RadialBasisKernelType",
       {"gamma='0.5'", "gamma='0.5' sigma='1'"}},
      {"kernel-parameter-absent at RadialBasisKernelType", {"gamma='0.5'", ""}},
      {"fractional-degree at PolynomialKernelType",
       {"<RadialBasisKernelType gamma='0.5'",
        "<PolynomialKernelType gamma='1' coef0='1' degree='2.5'"}},
      {"kernel-vanishes at RadialBasisKernelType", {"gamma='0.5'", "gamma='5000'"}},
      {"kernel-constant at RadialBasisKernelType", {"gamma='0.5'", "gamma='1e-14'"}},
      {"kernel-saturates at SigmoidKernelType",
       {"<RadialBasisKernelType gamma='0.5'", "<SigmoidKernelType gamma='1' coef0='50'"}},
      {"zero-machine at Coefficients", {"*(<Coefficient value=')[-0-9.]*", "$010"}},
      {"constant-side at Coefficients, one-signed-machine at Coefficients",
       {"<Coefficient value='-1'/>", "<Coefficient value='1'/>"}},
      {"constant-side at Coefficients", {"absoluteValue='0.1'", "absoluteValue='1.01'"}},
      // The signs of a bounded kernel: -1 is still in reach.
      {"", {"absoluteValue='0.1'", "absoluteValue='0.99'"}},
      {"coefficients-unbalanced at Coefficients",
       {"<Coefficient value='-", "<Coefficient value='"},
       "diabetes"},
      {"offset-sign at Coefficients", {"absoluteValue='-", "absoluteValue='"}, "tumour"},
      {"offset-off at Coefficients", {"absoluteValue='-0.1", "absoluteValue='-0.9"}, "tumour"},
      // A threshold may replace the offset.
      {"",
       {"absoluteValue='-0.12310679071170864'", "absoluteValue='0'",
        "alternateTargetCategory='benign'",
        "alternateTargetCategory='benign' threshold='0.12310679071170864'"},
       "tumour"},
      {"extension-contradicts-votes at SupportVectorMachine", {"A='-", "A='"}, "tumour"},
      {"response-later at SupportVectorMachine, extension-contradicts-votes at "
       "SupportVectorMachine, constant-field at VectorFields",
       {"response='0' nonResponse='1'", "response='1' nonResponse='0'"},
       "digits"},
      {"max-wins-inverted at SupportVectorMachineModel",
       {"maxWins='true'", "maxWins='false'"},
       "iris"},
      {"machine-sign at SupportVectorMachine",
       {"targetCategory='setosa' alternateTargetCategory='versicolor'",
        "targetCategory='versicolor' alternateTargetCategory='setosa'"},
       "iris"},
      {"method-contradicts-machines at SupportVectorMachineModel",
       {"'OneAgainstOne'", "'OneAgainstAll'"},
       "iris"},
      {"target-repeated at SupportVectorMachine, category-never-predicted at DataField",
       {"'OneAgainstOne'", "'OneAgainstAll'", "* alternateTargetCategory='[a-z]*'", ""},
       "iris"},
      {"pair-repeated at SupportVectorMachine",
       {"targetCategory='setosa' alternateTargetCategory='virginica'",
        "targetCategory='versicolor' alternateTargetCategory='setosa' "},
       "iris"},
      {"same-category-twice at SupportVectorMachine, category-never-predicted at DataField",
       {"alternateTargetCategory='no'", "alternateTargetCategory='yes'"}},
      {"threshold-not-used at SupportVectorMachine",
       {"<SupportVectorMachine>", "<SupportVectorMachine threshold='0.5'>"},
       "diabetes"},
      {"max-wins-early at SupportVectorMachineModel",
       {"PMML-4_4", "PMML-4_1", "version='4.4'", "version='4.1'"}},
  };
}

}  // namespace svmscore::app
