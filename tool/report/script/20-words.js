// How numbers read.

function counted(count, noun) {
  return `${count.toLocaleString("en")} ${noun}${count === 1 ? "" : "s"}`;
}

function sizeInWords(bytes) {
  const units = ["KiB", "MiB", "GiB"];
  if (bytes < 1024) {
    return counted(bytes, "byte");
  }
  let unit = 0;
  let size = bytes / 1024;
  for (; size >= 1024 && unit + 1 < units.length; ++unit) {
    size /= 1024;
  }
  return `${size.toFixed(1)} ${units[unit]}`;
}

// Exact, with as many decimals as it takes.
function frequency(hertz) {
  const [unit, factor] = [["GHz", 1e9], ["MHz", 1e6], ["kHz", 1e3]].find(([, least]) => hertz >= least) ?? ["Hz", 1];
  return `${hertz / factor} ${unit}`;
}

function hexadecimal(number) {
  return `0x${number.toString(16)}`;
}

function time(utc) {
  return utc === null ? "" : utc.replace("T", " ");
}

function yesNo(flag) {
  return flag ? "yes" : "no";
}

function sum(numbers) {
  return numbers.reduce((total, number) => total + number, 0);
}
