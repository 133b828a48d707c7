/* c_program MODEL CASES: all of the C interface from C99. Scores the CSV file CASES, whose cells
 * hold no quotes, as a table and case by case, and prints what `svmscore score` prints; each step
 * that does not do as the header says ends it with a message. */
#include <svmscore.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define MOST_COLUMNS 128

static void require(int holds, const char* what) {
  if (holds) return;
  fprintf(stderr, "c_program: %s\n", what);
  exit(1);
}

static void check(int kind, svmscore_error* error) {
  if (kind == SVMSCORE_OK) return;
  fprintf(stderr, "c_program: %s\n", svmscore_error_message(error).data);
  exit(1);
}

static char* read_file(const char* path, size_t* size) {
  FILE* file = fopen(path, "rb");
  char* data = NULL;
  size_t room = 0;
  require(file != NULL, path);
  for (*size = 0;;) {
    size_t count;
    if (*size + 1 >= room) data = realloc(data, room = 2 * room + 65536);
    require(data != NULL, "out of memory");
    count = fread(data + *size, 1, room - *size - 1, file);
    *size += count;
    if (count == 0) break;
  }
  data[*size] = '\0';
  fclose(file);
  return data;
}

/* A column of texts as it grows. */
struct texts {
  char* data;
  size_t size, room;
  int32_t* offsets;
  size_t count;
};

static void append(struct texts* texts, const char* cell, size_t size) {
  if (texts->size + size + 1 > texts->room) {
    texts->room = 2 * (texts->room + size + 1);
    texts->data = realloc(texts->data, texts->room);
  }
  texts->offsets = realloc(texts->offsets, (texts->count + 2) * sizeof *texts->offsets);
  require(texts->data != NULL && texts->offsets != NULL, "out of memory");
  if (texts->count == 0) texts->offsets[0] = 0;
  memcpy(texts->data + texts->size, cell, size);
  texts->size += size;
  texts->offsets[++texts->count] = (int32_t)texts->size;
}

/* Cuts the file into columns; returns their number, and the number of rows. */
static size_t cut(char* text, struct texts* columns, svmscore_column* views, size_t* rows) {
  size_t count = 0, column = 0, line = 0, i;
  char *cell = text, *at;
  for (at = text; *at != '\0'; ++at) {
    if (*at != ',' && *at != '\n') continue;
    if (line == 0) {
      svmscore_column view = SVMSCORE_INIT(svmscore_column);
      require(count < MOST_COLUMNS, "too many columns");
      view.name = cell;
      view.name_length = (size_t)(at - cell);
      views[count++] = view;
    } else {
      append(&columns[column], cell, (size_t)(at - cell));
    }
    ++column;
    if (*at == '\n') column = 0, ++line;
    cell = at + 1;
  }
  *rows = line - 1;
  for (i = 0; i < count; ++i) {
    views[i].type = SVMSCORE_UTF8;
    views[i].length = *rows;
    views[i].data = columns[i].data;
    views[i].data_size = columns[i].size;
    views[i].offsets = columns[i].offsets;
    views[i].offsets_size = (*rows + 1) * sizeof(int32_t);
  }
  return count;
}

/* The shortest text that reads back to the number, with a point in every locale. */
static void print_number(double number) {
  char text[64];
  int digits;
  for (digits = 1; digits <= 17; ++digits) {
    sprintf(text, "%.*g", digits, number);
    if (strtod(text, NULL) == number) break;
  }
  text[strcspn(text, ",")] = strchr(text, ',') == NULL ? '\0' : '.';
  fputs(text, stdout);
}

static int is_missing(const svmscore_column* column, size_t row) {
  return column->validity != NULL && (column->validity[row / 8] >> row % 8 & 1) == 0;
}

static void print_cell(const svmscore_column* column, size_t row) {
  if (is_missing(column, row)) return;
  if (column->type == SVMSCORE_F64) {
    print_number(((const double*)column->data)[row]);
  } else if (column->type == SVMSCORE_I64) {
    printf("%ld", (long)((const int64_t*)column->data)[row]);
  } else {
    const int64_t* offsets = column->offsets;
    printf("%.*s", (int)(offsets[row + 1] - offsets[row]),
           (const char*)column->data + offsets[row]);
  }
}

static void print_table(const svmscore_table* table) {
  size_t row, i;
  for (i = 0; i < table->column_count; ++i) {
    printf("%s%.*s", i == 0 ? "" : ",", (int)table->columns[i].name_length, table->columns[i].name);
  }
  putchar('\n');
  for (row = 0; row < table->row_count; ++row) {
    for (i = 0; i < table->column_count; ++i) {
      if (i > 0) putchar(',');
      print_cell(&table->columns[i], row);
    }
    putchar('\n');
  }
  require(table->scored + table->missing + table->invalid == table->row_count, "counts add up");
}

/* Every case of the table alone gets what the table gave. */
static void compare_cases(svmscore_scorer* scorer, const svmscore_model* model,
                          const struct texts* columns, const svmscore_column* views, size_t count,
                          const svmscore_table* table) {
  svmscore_value inputs[MOST_COLUMNS], outputs[MOST_COLUMNS];
  svmscore_model_facts facts = SVMSCORE_INIT(svmscore_model_facts);
  svmscore_error* error = NULL;
  size_t row, i, k;
  check(svmscore_model_get_facts(model, &facts, &error), error);
  for (row = 0; row < table->row_count; ++row) {
    memset(inputs, 0, sizeof inputs);
    for (i = 0; i < facts.input_count; ++i) {
      svmscore_input input = SVMSCORE_INIT(svmscore_input);
      check(svmscore_model_get_input(model, i, &input, &error), error);
      for (k = 0; k < count; ++k) {
        if (views[k].name_length != input.name.length) continue;
        if (memcmp(views[k].name, input.name.data, input.name.length) != 0) continue;
        inputs[i].kind = SVMSCORE_TEXT;
        inputs[i].text = columns[k].data + columns[k].offsets[row];
        inputs[i].length = (size_t)(columns[k].offsets[row + 1] - columns[k].offsets[row]);
      }
    }
    check(svmscore_score_case(scorer, inputs, facts.input_count, outputs, table->column_count,
                              &error),
          error);
    require(outputs[table->column_count - 1].whole == table->status[row], "a case has its status");
    for (i = 0; i < table->column_count; ++i) {
      if (table->columns[i].type != SVMSCORE_F64) continue;
      require(is_missing(&table->columns[i], row) == (outputs[i].kind == SVMSCORE_MISSING),
              "a case lacks what its row lacks");
      require(outputs[i].kind == SVMSCORE_MISSING ||
                  outputs[i].number == ((const double*)table->columns[i].data)[row],
              "a case scores as its row");
    }
  }
}

static void remark(void* context, const char* text, size_t length) {
  require(strlen(text) == length, "a remark ends with a NUL");
  ++*(int*)context;
}

int main(int argc, char** argv) {
  static struct texts columns[MOST_COLUMNS];
  static svmscore_column views[MOST_COLUMNS];
  svmscore_load_options load = SVMSCORE_INIT(svmscore_load_options);
  svmscore_table table = SVMSCORE_INIT(svmscore_table);
  svmscore_model *model = NULL, *same = NULL;
  svmscore_scorer *scorer = NULL, *single = NULL;
  svmscore_error* error = NULL;
  size_t size, count, rows, length;
  char *text, *document, *json = NULL;
  int remarks = 0;
  require(argc == 3, "usage: c_program MODEL CASES");
  require(strcmp(svmscore_version(), "0.1.0") == 0, "version");
  require(strlen(svmscore_instruction_set()) > 0, "instruction set");

  require(svmscore_load_file("no such file", SVMSCORE_NUL_ENDED, NULL, &model, &error) ==
              SVMSCORE_SYSTEM,
          "a file that is not there");
  require(svmscore_error_code(error) == 260301, "its code");
  svmscore_error_free(error);
  error = NULL;

  load.remark = remark;
  load.remark_context = &remarks;
  check(svmscore_load_file(argv[1], SVMSCORE_NUL_ENDED, &load, &model, &error), error);
  document = read_file(argv[1], &size);
  check(svmscore_load_memory(document, size, NULL, &same, &error), error);
  free(document);
  check(svmscore_describe(same, &json, &length, &error), error);
  require(strlen(json) == length && json[0] == '{', "describe gives JSON");
  svmscore_text_free(json);

  text = read_file(argv[2], &size);
  count = cut(text, columns, views, &rows);
  check(svmscore_scorer_new(model, NULL, &scorer, &error), error);
  check(svmscore_scorer_new(same, NULL, &single, &error), error);
  svmscore_model_free(model); /* the scorer shares it */
  check(svmscore_score(scorer, views, count, rows, &table, &error), error);
  print_table(&table);
  compare_cases(single, same, columns, views, count, &table);
  svmscore_scorer_free(scorer);
  svmscore_scorer_free(single);
  svmscore_model_free(same);
  for (count = 0; count < MOST_COLUMNS; ++count) {
    free(columns[count].data);
    free(columns[count].offsets);
  }
  free(text);
  return 0;
}
