// import.mjs ROOT MARKER...: the import of number markers as queries of DuckDB, for comparison.
// import.mjs --list FILE MARKER...: the same of the paths in a file, a line each.
//
// Prints the seconds of the import and what it found. On the campaign that is the same as floor's;
// a marker that no number follows, or a number such as 5.e6, is read otherwise.

import { createRequire } from 'node:module';

// A plain import does not look along NODE_PATH; the package stands outside of the source tree.
const { DuckDBInstance } = createRequire(import.meta.url)('@duckdb/node-api');

const number = String.raw`([-+]?(?:\d+(?:\.\d+)?|\.\d+)(?:[DEde][-+]?\d+)?)`;
const words = process.argv.slice(2);
const isList = words[0] === '--list';
const [source, ...markers] = isList ? words.slice(1) : words;

const text = (value) => `'${value.replaceAll("'", "''")}'`;
const literally = (marker) => marker.replace(/[^\w]/g, String.raw`\$&`);
const folder = source.replace(/\/*$/, '/');
// No byte of a path divides columns or quotes.
const lines = `select path from read_csv(${text(source)}, header = false, delim = '\x01', quote = '',
    escape = '', columns = {'path': 'VARCHAR'})`;
const tree = `select substr(file, ${folder.length + 1}) as path from glob(${text(folder + '**')})`;
const expression = markers.map((marker) => literally(marker) + number).join('.*?');
const columns = markers.map((_, k) => `value${k}`);

const start = performance.now();
const instance = await DuckDBInstance.create(':memory:');
const connection = await instance.connect();
await connection.run(`
    create table files as
    select path, unnest(regexp_extract(path, ${text(expression)}, [${columns.map(text)}], 's'))
    from (${isList ? lines : tree})`);
await connection.run(`
    create table cases as
    select row_number() over (order by min(path)) - 1 as number, ${columns}, list(path) as files
    from files where value0 <> '' group by ${columns} order by number`);
const seconds = (performance.now() - start) / 1000;

const count = async (table) =>
    (await connection.runAndReadAll(`select count(*) from ${table}`)).getRows()[0][0];
console.log(`import ${seconds.toFixed(6)}`);
console.log(`files ${await count('files')}\ncases ${await count('cases')}`);
