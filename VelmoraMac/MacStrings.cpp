#include "MacStrings.h"

namespace velmora::MacStrings {

const Tables& values()
{
    static const Tables tables{
        {"en",
            {
                {"notificationSettings", "Open Notification Settings"},
                {"menuWelcome", "Your pond is always nearby"},
                {"menuFind", "Look for this icon in the menu bar. Click it to open your pond."},
                {"launchAtLogin", "Launch Velmora at login"},
                {"launchAtLoginBody", "Velmora will run in the menu bar without opening the pond window."},
                {"loginApproval", "Allow Velmora to launch at login in System Settings."},
                {"loginSettings", "Open Login Items"},
                {"loginError", "Could not change the launch-at-login setting. Please try again."},
                {"quitApp", "Quit Velmora"},
                {"stateOn", "On"},
                {"stateOff", "Off"},
                {"alreadyRunning", "Velmora is already running"},
                {"alreadyRunningBody",
                    "Another Velmora is keeping your practice right now. This one will close; your saved practice has "
                    "not been changed."},
                {"startupError", "Velmora could not start"},
                {"startupErrorBody",
                    "The app resources could not be loaded. Your saved practice has not been changed."},
                {"okay", "OK"},
            }},
        {"ru",
            {
                {"notificationSettings", "Открыть настройки уведомлений"},
                {"menuWelcome", "Пруд всегда рядом"},
                {"menuFind", "Ищите этот значок в строке меню. Нажмите на него, чтобы открыть пруд."},
                {"launchAtLogin", "Запускать Velmora при входе в систему"},
                {"launchAtLoginBody", "Velmora будет работать в строке меню, не открывая окно пруда."},
                {"loginApproval", "Разрешите запуск Velmora при входе в систему в системных настройках."},
                {"loginSettings", "Настройки автозапуска"},
                {"loginError", "Не удалось изменить настройку автозапуска. Попробуйте ещё раз."},
                {"quitApp", "Завершить Velmora"},
                {"stateOn", "Включено"},
                {"stateOff", "Выключено"},
                {"alreadyRunning", "Velmora уже запущена"},
                {"alreadyRunningBody",
                    "Вашу практику сейчас ведёт другая копия Velmora. Эта копия закроется; данные вашей практики не "
                    "изменены."},
                {"startupError", "Не удалось запустить Velmora"},
                {"startupErrorBody", "Не удалось загрузить файлы приложения. Данные вашей практики не изменены."},
                {"okay", "ОК"},
            }},
        {"fr",
            {
                {"notificationSettings", "Ouvrir les réglages des notifications"},
                {"menuWelcome", "Votre étang est toujours à portée de main"},
                {"menuFind", "Retrouvez cette icône dans la barre des menus. Cliquez dessus pour ouvrir votre étang."},
                {"launchAtLogin", "Lancer Velmora à l’ouverture de session"},
                {"launchAtLoginBody", "Velmora attendra dans la barre des menus sans ouvrir la fenêtre de l’étang."},
                {"loginApproval",
                    "Autorisez Velmora dans les Réglages Système pour activer le lancement à l’ouverture de session."},
                {"loginSettings", "Ouvrir les éléments d’ouverture"},
                {"loginError", "Impossible de modifier le lancement automatique. Réessayez."},
                {"quitApp", "Quitter Velmora"},
                {"stateOn", "Activé"},
                {"stateOff", "Désactivé"},
                {"alreadyRunning", "Velmora est déjà ouvert"},
                {"alreadyRunningBody",
                    "Une autre copie de Velmora tient déjà votre pratique. Celle-ci va se fermer. Votre pratique "
                    "enregistrée n’a pas été modifiée."},
                {"startupError", "Velmora n’a pas pu démarrer"},
                {"startupErrorBody",
                    "Les ressources de l’application n’ont pas pu être chargées. Votre pratique enregistrée n’a pas "
                    "été modifiée."},
                {"okay", "OK"},
            }},
        {"es",
            {
                {"notificationSettings", "Abrir ajustes de notificaciones"},
                {"menuWelcome", "Tu estanque siempre está cerca"},
                {"menuFind", "Busca este icono en la barra de menús. Haz clic para abrir tu estanque."},
                {"launchAtLogin", "Abrir Velmora al iniciar sesión"},
                {"launchAtLoginBody", "Velmora esperará en la barra de menús sin abrir la ventana del estanque."},
                {"loginApproval", "Permite Velmora en Ajustes del Sistema para activar el inicio automático."},
                {"loginSettings", "Abrir ítems de inicio"},
                {"loginError", "No se pudo cambiar el inicio automático. Inténtalo de nuevo."},
                {"quitApp", "Salir de Velmora"},
                {"stateOn", "Activado"},
                {"stateOff", "Desactivado"},
                {"alreadyRunning", "Velmora ya está abierto"},
                {"alreadyRunningBody",
                    "Otra copia de Velmora ya está llevando tu práctica. Esta se cerrará; tu práctica guardada no se "
                    "ha modificado."},
                {"startupError", "Velmora no ha podido iniciarse"},
                {"startupErrorBody",
                    "No se han podido cargar los recursos de la aplicación. Tu práctica guardada no se ha modificado."},
                {"okay", "Aceptar"},
            }},
        {"pt",
            {
                {"notificationSettings", "Abrir ajustes de notificações"},
                {"menuWelcome", "O seu lago está sempre por perto"},
                {"menuFind", "Procure este ícone na barra de menus. Clique para abrir o lago."},
                {"launchAtLogin", "Abrir Velmora ao iniciar sessão"},
                {"launchAtLoginBody", "Velmora ficará na barra de menus sem abrir a janela do lago."},
                {"loginApproval", "Autorize o Velmora nos Ajustes do Sistema para ativar a abertura automática."},
                {"loginSettings", "Abrir Itens de Início de Sessão"},
                {"loginError", "Não foi possível alterar a abertura automática. Tente novamente."},
                {"quitApp", "Encerrar Velmora"},
                {"stateOn", "Ativado"},
                {"stateOff", "Desativado"},
                {"alreadyRunning", "O Velmora já está aberto"},
                {"alreadyRunningBody",
                    "Outra cópia do Velmora já está cuidando da sua prática. Esta será fechada; sua prática salva não "
                    "foi alterada."},
                {"startupError", "Não foi possível iniciar o Velmora"},
                {"startupErrorBody",
                    "Não foi possível carregar os recursos do aplicativo. Sua prática salva não foi alterada."},
                {"okay", "OK"},
            }},
        {"hi",
            {
                {"notificationSettings", "सूचनाओं की सेटिंग्स खोलें"},
                {"menuWelcome", "आपका तालाब हमेशा पास है"},
                {"menuFind", "मेनू बार में यह चिह्न देखें। तालाब खोलने के लिए इस पर क्लिक करें।"},
                {"launchAtLogin", "लॉगिन करते समय Velmora शुरू करें"},
                {"launchAtLoginBody", "Velmora तालाब की विंडो खोले बिना मेनू बार में रहेगा।"},
                {"loginApproval", "लॉगिन करते समय Velmora अपने-आप शुरू हो सके, इसके लिए सिस्टम सेटिंग्स में अनुमति दें।"},
                {"loginSettings", "लॉगिन आइटम खोलें"},
                {"loginError", "लॉगिन करते समय अपने-आप शुरू होने की सेटिंग नहीं बदली जा सकी। फिर कोशिश करें।"},
                {"quitApp", "Velmora से बाहर निकलें"},
                {"stateOn", "चालू"},
                {"stateOff", "बंद"},
                {"alreadyRunning", "Velmora पहले से चल रहा है"},
                {"alreadyRunningBody",
                    "Velmora की एक और प्रति अभी आपका अभ्यास संभाल रही है। यह प्रति बंद हो जाएगी; आपके सहेजे गए अभ्यास में कोई "
                    "बदलाव नहीं हुआ है।"},
                {"startupError", "Velmora शुरू नहीं हो सका"},
                {"startupErrorBody", "ऐप के लिए ज़रूरी फ़ाइलें लोड नहीं हो सकीं। आपके सहेजे गए अभ्यास में कोई बदलाव नहीं हुआ है।"},
                {"okay", "ठीक है"},
            }},
    };
    return tables;
}

const Table& table(std::string_view language)
{
    const Tables& tables = values();
    const auto found = tables.find(language);
    return found != tables.end() ? found->second : tables.find("en")->second;
}

} // namespace velmora::MacStrings
