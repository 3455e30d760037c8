// All tabs, on every page, show the language that the reader chose last.
document.addEventListener("DOMContentLoaded", () => {
  const tabs = [...document.querySelectorAll(".tabs > input")];
  const show = (language) => {
    for (const tab of tabs) if (tab.value === language) tab.checked = true;
  };
  show(localStorage.getItem("language"));
  for (const tab of tabs) {
    tab.addEventListener("change", () => {
      localStorage.setItem("language", tab.value);
      show(tab.value);
    });
  }
});
