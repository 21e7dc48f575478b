// Gives the token to the station, which answers with a cookie.
const form = document.getElementById("login");
const token = document.getElementById("token");
const notice = document.getElementById("notice");
const button = form.querySelector("button");

/** @returns {Promise<string>} why it did not succeed; empty: it did */
async function logIn() {
    try {
        const response = await fetch("/api/v1/login", {
            method: "POST",
            headers: { "Content-Type": "application/json", "X-Kakb": "1" },
            body: JSON.stringify({ token: token.value.trim() }),
            credentials: "same-origin",
        });
        if (response.ok) return "";
        const answer = await response.json().catch(() => ({}));
        return answer.error ?? `The station answers with status ${response.status}.`;
    } catch {
        return "The station does not answer.";
    }
}

form.addEventListener("submit", async (event) => {
    event.preventDefault();
    button.disabled = true;
    const problem = await logIn();
    button.disabled = false;
    notice.textContent = problem;
    if (problem === "") window.location.replace("/");
    else token.select();
});
