/* score_csv MODEL CASES: scores a CSV file, whose cells hold no quotes, on two threads; prints
 * every result by its name, and why a row failed. */
#include <svmscore.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define MOST_COLUMNS 200
#define LONGEST_LINE 65536

static void check(int kind, svmscore_error* error) {
  if (kind == SVMSCORE_OK) return;
  fprintf(stderr, "score_csv: %s\n", svmscore_error_message(error).data);
  svmscore_error_free(error);
  exit(1);
}

static void fail(const char* what) {
  fprintf(stderr, "score_csv: %s\n", what);
  exit(1);
}

static void* grow(void* memory, size_t size) {
  memory = realloc(memory, size);
  if (memory == NULL) fail("out of memory");
  return memory;
}

/* Texts one after the other, and where each begins; the last offset is the end of the last. */
struct texts {
  char* bytes;
  int32_t* offsets;
  size_t count;
};

static void append(struct texts* texts, const char* text, size_t size) {
  const int32_t used = texts->count == 0 ? 0 : texts->offsets[texts->count];
  texts->bytes = grow(texts->bytes, (size_t)used + size + 1);
  memcpy(texts->bytes + used, text, size);
  texts->offsets = grow(texts->offsets, (texts->count + 2) * sizeof *texts->offsets);
  texts->offsets[0] = 0;
  texts->offsets[++texts->count] = used + (int32_t)size;
}

static svmscore_column column_of(const char* name, const struct texts* texts) {
  svmscore_column column = SVMSCORE_INIT(svmscore_column);
  column.name = name;
  column.name_length = SVMSCORE_NUL_ENDED;
  column.type = SVMSCORE_UTF8;
  column.length = texts->count;
  column.data = texts->bytes;
  column.data_size = texts->count == 0 ? 0 : (size_t)texts->offsets[texts->count];
  column.offsets = texts->offsets;
  column.offsets_size = (texts->count + 1) * sizeof *texts->offsets;
  return column;
}

/* Reads a line into its cells; returns their number. */
static size_t read_cells(FILE* file, char* line, char** cells) {
  size_t count = 0;
  if (fgets(line, LONGEST_LINE, file) == NULL) return 0;
  line[strcspn(line, "\r\n")] = '\0';
  for (; line != NULL; ++count) {
    if (count == MOST_COLUMNS) fail("too many columns");
    cells[count] = line;
    line = strchr(line, ',');
    if (line != NULL) *line++ = '\0';
  }
  return count;
}

static int has_value(const svmscore_column* column, size_t row) {
  const size_t k = column->offset + row;
  return column->validity == NULL || (column->validity[k / 8] >> (k % 8) & 1) != 0;
}

static void print_cell(const svmscore_column* column, size_t row) {
  const size_t k = column->offset + row;
  const int64_t* offsets = column->offsets;
  printf("  %s: ", column->name);
  switch (column->type) {
    case SVMSCORE_F64:
      printf("%g\n", ((const double*)column->data)[k]);
      break;
    case SVMSCORE_I64:
      printf("%ld\n", (long)((const int64_t*)column->data)[k]);
      break;
    case SVMSCORE_UTF8_64:
      printf("%.*s\n", (int)(offsets[k + 1] - offsets[k]), (const char*)column->data + offsets[k]);
      break;
  }
}

static void score(const char* path, const svmscore_column* columns, size_t count, size_t rows) {
  svmscore_scorer_options options = SVMSCORE_INIT(svmscore_scorer_options);
  svmscore_table table = SVMSCORE_INIT(svmscore_table);
  svmscore_model* model = NULL;
  svmscore_scorer* scorer = NULL;
  svmscore_error* error = NULL;
  size_t row, i;
  check(svmscore_load_file(path, SVMSCORE_NUL_ENDED, NULL, &model, &error), error);
  options.columns = SVMSCORE_COLUMNS_RAW;
  options.reasons = 1;
  options.threads = 2;
  check(svmscore_scorer_new(model, &options, &scorer, &error), error);
  check(svmscore_score(scorer, columns, count, rows, &table, &error), error);
  for (row = 0; row < table.row_count; ++row) {
    printf("row %lu\n", (unsigned long)row + 1);
    for (i = 0; i < table.column_count; ++i) {
      if (has_value(&table.columns[i], row)) print_cell(&table.columns[i], row);
    }
  }
  svmscore_scorer_free(scorer);
  svmscore_model_free(model);
}

int main(int argc, char** argv) {
  static char header[LONGEST_LINE], line[LONGEST_LINE];
  static char *names[MOST_COLUMNS], *cells[MOST_COLUMNS];
  static struct texts texts[MOST_COLUMNS];
  static svmscore_column columns[MOST_COLUMNS];
  size_t count, found, rows = 0, i;
  FILE* file;
  if (argc != 3) fail("usage: score_csv MODEL CASES");
  file = fopen(argv[2], "r");
  if (file == NULL) fail("cannot read the cases");
  count = read_cells(file, header, names);
  while ((found = read_cells(file, line, cells)) != 0) {
    if (found != count) fail("a row has not as many cells as the header");
    for (i = 0; i < count; ++i) append(&texts[i], cells[i], strlen(cells[i]));
    ++rows;
  }
  fclose(file);
  for (i = 0; i < count; ++i) columns[i] = column_of(names[i], &texts[i]);
  score(argv[1], columns, count, rows);
  for (i = 0; i < count; ++i) {
    free(texts[i].bytes);
    free(texts[i].offsets);
  }
  return 0;
}
