#include <set>
#include <string>

#include <gtest/gtest.h>

#include "VelmoraMac/MacStrings.h"

namespace velmora {
namespace {

struct NativeText {
    const char* language;
    const char* key;
    const char* text;
};

// Every built-in text as users must see it, typographic apostrophes and all.
const NativeText expectedTexts[] = {
    {"en", "notificationSettings", "Open Notification Settings"},
    {"en", "menuWelcome", "Your pond is always nearby"},
    {"en", "menuFind", "Look for this icon in the menu bar. Click it to open your pond."},
    {"en", "launchAtLogin", "Launch Velmora at login"},
    {"en", "launchAtLoginBody", "Velmora will run in the menu bar without opening the pond window."},
    {"en", "loginApproval", "Allow Velmora to launch at login in System Settings."},
    {"en", "loginSettings", "Open Login Items"},
    {"en", "loginError", "Could not change the launch-at-login setting. Please try again."},
    {"en", "quitApp", "Quit Velmora"},
    {"en", "stateOn", "On"},
    {"en", "stateOff", "Off"},
    {"en", "startupError", "Velmora could not start"},
    {"en", "startupErrorBody", "The app resources could not be loaded. Your saved practice has not been changed."},
    {"en", "okay", "OK"},
    {"ru", "notificationSettings", "Открыть настройки уведомлений"},
    {"ru", "menuWelcome", "Пруд всегда рядом"},
    {"ru", "menuFind", "Ищите этот значок в строке меню. Нажмите на него, чтобы открыть пруд."},
    {"ru", "launchAtLogin", "Запускать Velmora при входе в систему"},
    {"ru", "launchAtLoginBody", "Velmora будет работать в строке меню, не открывая окно пруда."},
    {"ru", "loginApproval", "Разрешите запуск Velmora при входе в систему в системных настройках."},
    {"ru", "loginSettings", "Настройки автозапуска"},
    {"ru", "loginError", "Не удалось изменить настройку автозапуска. Попробуйте ещё раз."},
    {"ru", "quitApp", "Завершить Velmora"},
    {"ru", "stateOn", "Включено"},
    {"ru", "stateOff", "Выключено"},
    {"ru", "startupError", "Не удалось запустить Velmora"},
    {"ru", "startupErrorBody", "Не удалось загрузить файлы приложения. Данные вашей практики не изменены."},
    {"ru", "okay", "ОК"},
    {"fr", "notificationSettings", "Ouvrir les réglages des notifications"},
    {"fr", "menuWelcome", "Votre étang est toujours à portée de main"},
    {"fr", "menuFind", "Retrouvez cette icône dans la barre des menus. Cliquez dessus pour ouvrir votre étang."},
    {"fr", "launchAtLogin", "Lancer Velmora à l’ouverture de session"},
    {"fr", "launchAtLoginBody", "Velmora attendra dans la barre des menus sans ouvrir la fenêtre de l’étang."},
    {"fr", "loginApproval", "Autorisez Velmora dans les Réglages Système pour activer le lancement à l’ouverture de session."},
    {"fr", "loginSettings", "Ouvrir les éléments d’ouverture"},
    {"fr", "loginError", "Impossible de modifier le lancement automatique. Réessayez."},
    {"fr", "quitApp", "Quitter Velmora"},
    {"fr", "stateOn", "Activé"},
    {"fr", "stateOff", "Désactivé"},
    {"fr", "startupError", "Velmora n’a pas pu démarrer"},
    {"fr", "startupErrorBody", "Les ressources de l’application n’ont pas pu être chargées. Votre pratique enregistrée n’a pas été modifiée."},
    {"fr", "okay", "OK"},
    {"es", "notificationSettings", "Abrir ajustes de notificaciones"},
    {"es", "menuWelcome", "Tu estanque siempre está cerca"},
    {"es", "menuFind", "Busca este icono en la barra de menús. Haz clic para abrir tu estanque."},
    {"es", "launchAtLogin", "Abrir Velmora al iniciar sesión"},
    {"es", "launchAtLoginBody", "Velmora esperará en la barra de menús sin abrir la ventana del estanque."},
    {"es", "loginApproval", "Permite Velmora en Ajustes del Sistema para activar el inicio automático."},
    {"es", "loginSettings", "Abrir ítems de inicio"},
    {"es", "loginError", "No se pudo cambiar el inicio automático. Inténtalo de nuevo."},
    {"es", "quitApp", "Salir de Velmora"},
    {"es", "stateOn", "Activado"},
    {"es", "stateOff", "Desactivado"},
    {"es", "startupError", "Velmora no ha podido iniciarse"},
    {"es", "startupErrorBody", "No se han podido cargar los recursos de la aplicación. Tu práctica guardada no se ha modificado."},
    {"es", "okay", "Aceptar"},
    {"pt", "notificationSettings", "Abrir ajustes de notificações"},
    {"pt", "menuWelcome", "O seu lago está sempre por perto"},
    {"pt", "menuFind", "Procure este ícone na barra de menus. Clique para abrir o lago."},
    {"pt", "launchAtLogin", "Abrir Velmora ao iniciar sessão"},
    {"pt", "launchAtLoginBody", "Velmora ficará na barra de menus sem abrir a janela do lago."},
    {"pt", "loginApproval", "Autorize o Velmora nos Ajustes do Sistema para ativar a abertura automática."},
    {"pt", "loginSettings", "Abrir Itens de Início de Sessão"},
    {"pt", "loginError", "Não foi possível alterar a abertura automática. Tente novamente."},
    {"pt", "quitApp", "Encerrar Velmora"},
    {"pt", "stateOn", "Ativado"},
    {"pt", "stateOff", "Desativado"},
    {"pt", "startupError", "Não foi possível iniciar o Velmora"},
    {"pt", "startupErrorBody", "Não foi possível carregar os recursos do aplicativo. Sua prática salva não foi alterada."},
    {"pt", "okay", "OK"},
    {"hi", "notificationSettings", "सूचनाओं की सेटिंग्स खोलें"},
    {"hi", "menuWelcome", "आपका तालाब हमेशा पास है"},
    {"hi", "menuFind", "मेनू बार में यह चिह्न देखें। तालाब खोलने के लिए इस पर क्लिक करें।"},
    {"hi", "launchAtLogin", "लॉगिन करते समय Velmora शुरू करें"},
    {"hi", "launchAtLoginBody", "Velmora तालाब की विंडो खोले बिना मेनू बार में रहेगा।"},
    {"hi", "loginApproval", "लॉगिन करते समय Velmora अपने-आप शुरू हो सके, इसके लिए सिस्टम सेटिंग्स में अनुमति दें।"},
    {"hi", "loginSettings", "लॉगिन आइटम खोलें"},
    {"hi", "loginError", "लॉगिन करते समय अपने-आप शुरू होने की सेटिंग नहीं बदली जा सकी। फिर कोशिश करें।"},
    {"hi", "quitApp", "Velmora से बाहर निकलें"},
    {"hi", "stateOn", "चालू"},
    {"hi", "stateOff", "बंद"},
    {"hi", "startupError", "Velmora शुरू नहीं हो सका"},
    {"hi", "startupErrorBody", "ऐप के लिए ज़रूरी फ़ाइलें लोड नहीं हो सकीं। आपके सहेजे गए अभ्यास में कोई बदलाव नहीं हुआ है।"},
    {"hi", "okay", "ठीक है"},
};

TEST(MacStrings, Values_HoldExactlyTheExpectedTextOfEveryKeyInEveryTable)
{
    std::size_t expectedCount = 0;
    for (const NativeText& expected : expectedTexts) {
        ++expectedCount;
        const auto table = MacStrings::values().find(expected.language);
        ASSERT_NE(table, MacStrings::values().end()) << expected.language;
        const auto text = table->second.find(expected.key);
        ASSERT_NE(text, table->second.end()) << expected.language << " " << expected.key;
        EXPECT_EQ(text->second, expected.text) << expected.language << " " << expected.key;
    }
    std::size_t actualCount = 0;
    for (const auto& [language, table] : MacStrings::values())
        actualCount += table.size();
    EXPECT_EQ(actualCount, expectedCount) << "a text that is not expected";
}

TEST(MacStrings, Values_HaveSixTablesWithTheSameFourteenKeysAndNoPali)
{
    std::set<std::string> languages;
    for (const auto& [language, table] : MacStrings::values())
        languages.insert(language);
    EXPECT_EQ(languages, (std::set<std::string>{"en", "ru", "fr", "es", "pt", "hi"}));

    std::set<std::string> englishKeys;
    for (const auto& [key, text] : MacStrings::values().at("en"))
        englishKeys.insert(key);
    EXPECT_EQ(englishKeys.size(), 14U);
    for (const auto& [language, table] : MacStrings::values()) {
        std::set<std::string> keys;
        for (const auto& [key, text] : table) {
            keys.insert(key);
            EXPECT_FALSE(text.empty()) << language << " " << key;
            EXPECT_EQ(text.find("{count}"), std::string::npos) << language << " " << key;
        }
        EXPECT_EQ(keys, englishKeys) << language;
    }
}

TEST(MacStrings, Table_FallsBackToEnglishForALanguageWithoutATable)
{
    EXPECT_EQ(MacStrings::table("fr").at("quitApp"), "Quitter Velmora");
    for (const char* language : {"pi", "de", "", "EN"}) {
        EXPECT_EQ(&MacStrings::table(language), &MacStrings::values().at("en")) << language;
        EXPECT_EQ(MacStrings::table(language).at("startupError"), "Velmora could not start") << language;
    }
}

} // namespace
} // namespace velmora
