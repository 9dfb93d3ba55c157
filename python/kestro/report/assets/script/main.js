// Starts the page.

function startFilters() {
  const form = byId("filters");
  const again = () => {
    readFilters();
    select();
  };
  let waiting = 0;
  form.addEventListener("input", (event) => {
    if (event.target.id !== "by-smarts") return again();
    clearTimeout(waiting);
    waiting = setTimeout(searchSmarts, 300); // once typing has paused
  });
  form.addEventListener("submit", (event) => event.preventDefault());
  form.addEventListener("reset", () => setTimeout(() => {
    if (byId("by-smarts")) {
      asked += 1;
      byId("smarts-told").textContent = "";
      byId("smarts-hint").classList.remove("note");
      setFilter("smarts", null);
    }
    again();
  }));
}

sizesChart();
supportsChart();
startTable();
startFilters();
select();
startVolcano();
startDetails();
startExport();
document.documentElement.dataset.ready = "true";
performance.mark("usable");
